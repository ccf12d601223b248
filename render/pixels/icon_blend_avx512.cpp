#include "render/pixels/versions.h"
namespace talx { void takeAvx512IconBlend(Versions&){}
void takeAvx512Kernels(Versions&){} 
}
