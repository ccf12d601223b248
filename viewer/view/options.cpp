// The command line, by the table of options.
#include "viewer/view/options.h"

#include "viewer/view/failure.h"
#include "viewer/view/option_table.h"
#include "viewer/view/option_values.h"

#include <span>

namespace talview {
namespace {

struct Pair {
    const wchar_t* one;
    const wchar_t* other;
    const char* why;
};

// Each of these would do nothing beside the other one.
const Pair conflicts[] = {
    {L"--depth", L"--mask", "range values have all 16 bits"},
    {L"--full-screen", L"--save", "what is saved has the size that --size says"},
};

// Nobody can change a picture that is only saved, so there more does nothing.
const Pair conflictsWithoutWindow[] = {
    {L"--mask-color", L"--no-mask", "nothing is hidden"},
    {L"--marker", L"--no-overlays", "markers are overlays"},
    {L"--markers", L"--no-overlays", "markers are overlays"},
    {L"--no-grid", L"--no-overlays", "the grid is an overlay"},
    {L"--colour-bar", L"--no-overlays", "it is an overlay"},
    {L"--histogram", L"--no-overlays", "it is an overlay"},
    {L"--profile", L"--no-overlays", "it is an overlay"},
};

// Where nobody can save by hand.
const Pair holdNeeds[] = {
    {L"--format", L"--save", "it is the format of what is saved"},
    {L"--no-overlays", L"--save", "it says what is left out there"},
};

const Pair needs[] = {
    {L"--mask-color", L"--mask", "nothing is hidden"},
    {L"--no-mask", L"--mask", "nothing is hidden"},
};

const wchar_t* const needImage[] = {L"--save", L"--hold", L"--frame", L"--mask", L"--marker", L"--markers"};

[[noreturn]] void throwConflict(const Pair& pair) {
    throw UsageError(utf8(pair.one) + " does nothing with " + utf8(pair.other) + ": " + pair.why);
}

void checkPairs(const Options& options) {
    const auto bothGiven = [&](const Pair& pair) {
        return options.has(pair.one) && options.has(pair.other);
    };
    for (const Pair& pair : conflicts) {
        bothGiven(pair) ? throwConflict(pair) : void();
    }
    for (const Pair& pair : conflictsWithoutWindow) {
        bothGiven(pair) && !options.save.empty() && !options.hold ? throwConflict(pair) : void();
    }
}

void checkNeeds(const Options& options, std::span<const Pair> needs) {
    for (const Pair& pair : needs) {
        if (options.has(pair.one) && !options.has(pair.other)) {
            throw UsageError(utf8(pair.one) + " needs " + utf8(pair.other) + ": " + pair.why);
        }
    }
}

void checkValues(const Options& options) {
    for (const wchar_t* name : needImage) {
        if (options.image.empty() && options.has(name)) {
            throw UsageError(utf8(name) + " needs an image");
        }
    }
    if (options.has(L"--format") && options.directDraw) {
        throwConflict({L"--format", L"--engine directdraw", "that engine has no render targets"});
    }
    if (options.has(L"--depth") && options.range) {
        throwConflict({L"--depth", L"--kind range", "range values have all 16 bits"});
    }
    if (options.has(L"--kind") && !options.range && !options.mask.empty()) {
        throwConflict({L"--kind auto", L"--mask", "only a range image has a mask"});
    }
}

const Option* find(const std::wstring& name) {
    const auto& table = optionTable();
    const auto found =
        std::find_if(table.begin(), table.end(), [&](const Option& each) { return name == each.name; });
    return found == table.end() ? nullptr : &*found;
}

void readImage(Options& options, const std::wstring& argument) {
    if (argument.empty()) {
        throw UsageError("the name of the image is empty");
    }
    if (!options.image.empty()) {
        throw UsageError("more than one image: " + utf8(options.image) + " and " + utf8(argument));
    }
    options.image = argument;
}

} // namespace

Options parseOptions(const std::vector<std::wstring>& arguments) {
    Options options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const std::wstring name = *argument == L"-h" ? L"--help" : *argument;
        if (!name.starts_with(L'-')) {
            readImage(options, name);
            continue;
        }
        const Option* option = find(name);
        if (!option) {
            throw UsageError("unknown option " + utf8(name));
        }
        if (options.has(name) && name != L"--marker") {
            throw UsageError(utf8(name) + " is given twice");
        }
        options.given.push_back(name);
        const bool takesValue = *option->value != '\0';
        if (takesValue && (++argument == arguments.end() || argument->starts_with(L"--"))) {
            throw UsageError(utf8(name) + " needs a value: " + allowedValues(*option));
        }
        try {
            option->set(options, takesValue ? *argument : std::wstring());
        } catch (BadValue) {
            throw UsageError("bad value '" + utf8(*argument) + "' for " + utf8(name) + ": " +
                             allowedValues(*option));
        }
        if (options.help || options.version) {
            return options;
        }
    }
    checkPairs(options);
    checkNeeds(options, needs);
    if (options.hold) {
        checkNeeds(options, holdNeeds);
    }
    checkValues(options);
    options.range |= !options.mask.empty();
    return options;
}

} // namespace talview
