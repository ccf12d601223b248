// Picture files into pictures, through the system's own decoders.
#pragma once

#include "viewer/files/progress.h"
#include "viewer/view/picture.h"

#include <string>

namespace talview {

struct FileRequest {
    std::wstring path;
    std::wstring mask;  // of a range picture: a file of the same size, in which every pixel that is not black
                        // shows the value; empty: none
    bool range = false; // 16-bit, floating-point or other large grey values are shown as a range picture
    int depth = 16;     // significant bits of 16-bit grey: 8, 10, 12, 14 or 16
    unsigned frame = 0; // counted from 0
    bool mustBeRange = true; // false: what cannot be a range picture is shown as it is
};

struct FilePicture {
    Picture picture;
    unsigned frame = 0;
    unsigned frames = 1; // that the file has
    std::wstring note;   // what a person must know, such as that the file ends early; empty: nothing
};

// Reads strips of about a megabyte of rows; raw_rows.h says what becomes of each kind of pixels. The thread
// must be an apartment of COM. Throws Failure or talxrend::Failure for a file that cannot be opened or read,
// std::bad_alloc, and Cancelled at the next strip or the decoder's next read. What cannot be read of a
// picture is black and noted.
[[nodiscard]] FilePicture readPicture(const FileRequest& request, Progress& progress);

} // namespace talview
