// The classes of talxstd.dll.
#include <initguid.h> // defines the type library's id

#include "talxstd.h"

#include "com/module.h"
#include "imagelib/images.h"
#include "imagelib/resource.h"

namespace talx {

namespace {

constinit ObjectEntry classMap[] = {
    objectEntry<CTalImage8Grey>(IDR_TALIMAGE8GREY, L"TalImage8Grey"),
    objectEntry<CTalImageColor>(IDR_TALIMAGECOLOR, L"TalImageColor"),
    objectEntry<CTalImage16Grey>(IDR_TALIMAGE16GREY, L"TalImage16Grey"),
    objectEntry<CTalImage16Range>(IDR_TALIMAGE16RANGE, L"TalImage16Range"),
};

} // namespace

ModuleDefinition moduleDefinition() {
    return {classMap, LIBID_talxstd};
}

} // namespace talx
