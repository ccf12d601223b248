// The program as a person uses it: a window, the scene in it, and the commands that change it.
#pragma once

#include "viewer/files/file_watch.h"
#include "viewer/files/image.h"
#include "viewer/files/reader.h"
#include "viewer/scene/scene.h"
#include "viewer/view/options.h"
#include "viewer/view/state.h"
#include "viewer/view/view.h"
#include "viewer/window.h"

#include <functional>
#include <memory>

namespace talview {

class Viewer final : WindowEvents {
public:
    // The window is hidden still. With something to save or to hold, the picture is read before this returns,
    // and what fails is thrown; otherwise it is read beside the window, which then tells what fails.
    explicit Viewer(const Options& options);
    ~Viewer();

    [[nodiscard]] Scene& scene() { return *scene_; }

    [[nodiscard]] HWND window() const { return window_.handle(); }
    // Writes what the next run may begin with, unless the options say that nothing is remembered. The window
    // is not full screen any more.
    void keepState();
    // Saves what is shown, as the options say. Throws talxrend::Failure.
    void save(const std::wstring& path);

    // Makes the window visible, and says on standard output where its picture is.
    void show(bool isMaximised);
    // Until the window is closed or the time is over; says then how often the scene was drawn.
    void run(std::optional<double> seconds);

private:
    void command(int id) override;
    [[nodiscard]] CommandState stateOf(int id) const override;
    void dropped(const std::wstring& path) override { open(path); }
    void woken() override;
    void paint(const RECT& uncovered) override;
    void resized() override;
    void paletteChanged() override;
    void displayChanged() override;
    void dpiChanged() override;
    bool mayClose() override { return mayLeavePicture(); }
    void sessionEnds() override { keepState(); }
    void pressed(MouseButton button, POINT at, bool shift) override;
    void moved(POINT to) override;
    void left() override { updateStatus(); }
    void released() override { input_.release(); }
    void wheel(POINT at, double notches) override;

    bool commandFile(int id);
    bool commandPlace(int id);
    bool commandContrast(int id);
    bool commandOverlay(int id);
    void commandMarker(int id);
    void copyValue();
    void cancel();
    void saveMarkers();
    void showProfile(OverlayState& overlays);

    // Shows a file, or the first picture of a folder. If it cannot be read, the status line says why and the
    // previous picture stays.
    void open(const std::wstring& path, unsigned frame = 0);
    void openAtOnce(const std::wstring& path);
    [[nodiscard]] FileRequest requestFor(const std::wstring& path, unsigned frame);
    void openNeighbour(int steps);
    void openFrame(int steps);
    void reload();
    void readingEnded(Reader::Result result);
    void setPicture(const FileRequest& request, FilePicture file);

    // What fails is told in the status line, and the program goes on; where nobody is there to read that, it
    // is thrown.
    bool attempt(const std::function<void()>& work);
    // False if a person does not want to lose changed markers after all; asks, and saves them if told to.
    [[nodiscard]] bool mayLeavePicture();

    // The engine before stays if there is none of the kind.
    void makeScene(bool directDraw);
    void showOverlays(bool shown);
    void draw(const RECT& uncovered);
    // The view's state has changed: it is drawn, and told of, once no more messages wait.
    void changed();
    void tell(const std::wstring& message);
    void setTitle();
    void updateStatus();

    Options options_;
    std::wstring named_; // the file that the command line is about
    FileRequest shown_;  // the file of the picture
    FileRequest asked_;  // the file that was to be shown last
    unsigned frames_ = 1;
    bool isIncomplete_ = false;
    bool areOverlaysShown_ = true;
    talxrend::Guard failure_;
    std::optional<Image> image_;
    View view_;
    PointerInput input_;
    Window window_;
    std::unique_ptr<Scene> scene_;
    Reader reader_;
    FileWatch watch_;
    double drawingMilliseconds_ = 0; // the last time
    long drawings_ = 0;
};

} // namespace talview
