// The directories of a TIFF file.
#pragma once

#include "viewer/files/byte_reader.h"

namespace talview {

[[nodiscard]] FileFacts tiffFacts(ByteReader file, unsigned frame);

} // namespace talview
