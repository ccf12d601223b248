// The program as a person uses it: a window, the scene in it, and the commands that change it.
#pragma once

#include "viewer/scene/scene.h"
#include "viewer/view/options.h"
#include "viewer/window.h"

namespace talview {

class Viewer {
public:
    // Reads the image, if there is one; the window is hidden still.
    explicit Viewer(const Options& options);

    [[nodiscard]] Scene& scene() { return scene_; }

    // Makes the window visible, and says on standard output where its picture is.
    void show();
    // Until the window is closed or the time is over; says then how often the scene was drawn.
    void run(std::optional<double> seconds);

private:
    // Shows a file, or the first picture of a folder. If it cannot be read, the status line says why and the
    // previous picture stays.
    void open(const std::wstring& path);
    void openNeighbour(int steps);
    void command(int id);
    void setTitle();
    void updateStatus();

    Options options_;    // of the picture that is shown
    std::wstring asked_; // the file that was to be shown last
    talxrend::Guard failure_;
    Window window_;
    Scene scene_;
};

} // namespace talview
