// The classes of talxrend.dll.
#include <initguid.h> // defines the type library's id

#include "talxrend.h"

#include "com/module.h"
#include "ddraw_engine/tal_render_engine.h"
#include "gdi_engine/tal_gdi_render_engine.h"
#include "talxrend/resource.h"

namespace talx {

namespace {

constinit ObjectEntry classMap[] = {
    objectEntry<CTalRenderEngine>(IDR_TALRENDERENGINE, L"TalRenderEngine"),
    objectEntry<CTalGDIRenderEngine>(IDR_TALGDIRENDERENGINE, L"TalGDIRenderEngine"),
};

} // namespace

ModuleDefinition moduleDefinition() {
    return {classMap, LIBID_RENDERENGLib};
}

} // namespace talx
