#include "render/pixels/versions.h"
namespace talx {
void takeAvx2RowConverters(Versions&) {}
void takeAvx2IconBlend(Versions&) {}
} // namespace talx
