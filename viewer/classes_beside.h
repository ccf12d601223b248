// COM classes of DLLs that lie beside the program and are registered nowhere.
#pragma once

#include <windows.h>

#include <memory>

namespace talview {

// While this lives, the thread finds the classes that talview.exe.manifest beside the program names. The
// system itself does not read that file, since the program has a manifest inside. Without the file, what is
// registered counts. Throws talxrend::Failure if what the file says cannot be found.
class ClassesBeside {
public:
    ClassesBeside();
    ~ClassesBeside();
    ClassesBeside(const ClassesBeside&) = delete;
    ClassesBeside& operator=(const ClassesBeside&) = delete;

private:
    struct Release {
        void operator()(HANDLE context) const { ReleaseActCtx(context); }
    };
    std::unique_ptr<void, Release> context_; // null: there is no file
    ULONG_PTR cookie_ = 0;
};

} // namespace talview
