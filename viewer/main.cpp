// talview: shows an image in a window through a render engine, or saves what it would show.
#include "viewer/failure.h"
#include "viewer/image_file.h"
#include "viewer/options.h"
#include "viewer/save.h"
#include "viewer/window.h"

#include <cstdio>
#include <new>

namespace {

using namespace talview;

void view(const Options& options) {
    const talxrend::Apartment apartment;
    Image image =
        options.range ? loadRangeImage(options.image, options.mask) : loadImage(options.image, options.depth);
    Window window(options.width, options.height, options.image + L" - talview");
    Scene scene(window.handle(), options, std::move(image));
    window.show(scene);

    POINT origin{};
    ClientToScreen(window.handle(), &origin);
    std::printf("shown: client origin %ld,%ld size %ldx%ld\n", origin.x, origin.y, scene.extent().right,
                scene.extent().bottom);
    std::fflush(stdout);
    if (!options.save.empty()) {
        save(scene, static_cast<TalRenderTargetFormatConstants>(options.format), options.save);
    }
    if (options.hold || options.save.empty()) {
        window.run(options.hold);
    }
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    try {
        const Options options = parseOptions({argv + 1, argv + argc});
        if (options.help) {
            std::fputs(helpText, stdout);
            return 0;
        }
        // Positions and sizes are pixels of the screen, whatever its resolution.
        SetProcessDPIAware();
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
