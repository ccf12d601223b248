// talview: shows an image in a window through a render engine, or saves what it would show.
#include "viewer/classes_beside.h"
#include "viewer/share/save.h"
#include "viewer/view/failure.h"
#include "viewer/view/help.h"
#include "viewer/view/options.h"
#include "viewer/viewer.h"

#include <cstdio>
#include <new>

namespace {

using namespace talview;

void view(const Options& options) {
    const ClassesBeside classes;
    const talxrend::Apartment apartment;
    Viewer viewer(options);
    const bool isShown = options.save.empty() || options.hold;
    if (isShown) {
        viewer.show();
    }
    if (!options.save.empty()) {
        save(viewer.scene(), static_cast<TalRenderTargetFormatConstants>(options.format), options.save);
    }
    if (isShown) {
        viewer.run(options.hold);
    }
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    try {
        const Options options = parseOptions({argv + 1, argv + argc});
        if (options.help) {
            std::fputs(helpText().c_str(), stdout);
            return 0;
        }
        if (options.version) {
            std::puts("talview " TALVIEW_VERSION);
            return 0;
        }
        view(options);
        return 0;
    } catch (const UsageError& error) {
        std::fprintf(stderr, "talview: %s\nTry 'talview --help'.\n", error.what());
        return 2;
    } catch (const std::runtime_error& failure) {
        std::fprintf(stderr, "talview: %s\n", failure.what());
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "talview: not enough memory\n");
    }
    return 1;
}
