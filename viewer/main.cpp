// talview: shows an image in a window through a render engine, or saves what it would show.
#include "viewer/classes_beside.h"
#include "viewer/state_file.h"
#include "viewer/terminal.h"
#include "viewer/view/failure.h"
#include "viewer/view/help.h"
#include "viewer/view/options.h"
#include "viewer/viewer.h"
#include "viewer/window_place.h"

#include <algorithm>
#include <new>

namespace {

using namespace talview;

void view(Options options) {
    const ClassesBeside classes;
    const talxrend::Apartment apartment;
    const bool remembers = options.remembers && options.interactive();
    const State before = remembers ? readState() : State();
    useState(options, before);
    Viewer viewer(options);
    if (!options.has(L"--size")) {
        restorePlace(viewer.window(), before);
    }
    const bool isShown = options.save.empty() || options.hold;
    if (isShown) {
        viewer.show(before.isMaximised && !options.has(L"--size"));
    }
    if (!options.save.empty()) {
        viewer.save(options.save);
        if (viewer.scene().isReduced()) {
            tell(Output::error, "talview: a screen of 256 colours shows 8-bit grey only\n", false);
        }
    }
    if (isShown) {
        viewer.run(options.hold);
    }
    viewer.keepState();
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    const std::vector<std::wstring> arguments(argv + 1, argv + argc);
    // Whoever only saves may not be there to close a box.
    const bool mayShowBox = std::find(arguments.begin(), arguments.end(), L"--save") == arguments.end();
    const auto complain = [&](const std::string& text) {
        tell(Output::error, "talview: " + text + "\n", mayShowBox);
    };
    try {
        const Options options = parseOptions(arguments);
        if (options.help || options.version) {
            tell(Output::standard, options.help ? helpText() : "talview " TALVIEW_VERSION "\n", true);
            return 0;
        }
        view(options);
        return 0;
    } catch (const UsageError& error) {
        complain(std::string(error.what()) + "\nTry 'talview --help'.");
        return 2;
    } catch (const std::runtime_error& failure) {
        complain(failure.what());
    } catch (const std::bad_alloc&) {
        complain("not enough memory");
    }
    return 1;
}
