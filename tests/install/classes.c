/* Whether each class can be made by its ProgID, and the type libraries be loaded: what registering, or a manifest, gives.
   In C, with the ids of the SDK's library. */
#define COBJMACROS
#include <talxrend.h>

#include <stdio.h>

static int failures;

static void check(HRESULT hr, const wchar_t *what) {
    if (FAILED(hr)) {
        ++failures;
        fprintf(stderr, "%ls: 0x%08lx\n", what, (unsigned long)hr);
    }
}

static void make(const wchar_t *what, const CLSID *clsid) {
    IUnknown *object = NULL;
    check(CoCreateInstance(clsid, NULL, CLSCTX_INPROC_SERVER, &IID_IUnknown, (void **)&object), what);
    if (object) {
        IUnknown_Release(object);
    }
}

/* Where a manifest names the class, the id that belongs to its ProgID is another one. */
static void makeBoth(const wchar_t *progId, const CLSID *expected) {
    CLSID clsid = {0};
    check(CLSIDFromProgID(progId, &clsid), progId);
    make(progId, &clsid);
    make(progId, expected);
}

static void load(const GUID *id, const wchar_t *name) {
    ITypeLib *library = NULL;
    check(LoadRegTypeLib(id, 1, 0, 0, &library), name);
    if (library) {
        ITypeLib_Release(library);
    }
}

int main(void) {
    CoInitializeEx(NULL, COINIT_APARTMENTTHREADED);
    makeBoth(L"Hemlar.TalRenderEngine", &CLSID_TalRenderEngine);
    makeBoth(L"Hemlar.TalRenderEngine.1", &CLSID_TalRenderEngine);
    makeBoth(L"Hemlar.TalGDIRenderEngine", &CLSID_TalGDIRenderEngine);
    makeBoth(L"Hemlar.TalGDIRenderEngine.1", &CLSID_TalGDIRenderEngine);
    makeBoth(L"Hemlar.TalImage8Grey", &CLSID_TalImage8Grey);
    makeBoth(L"Hemlar.TalImageColor", &CLSID_TalImageColor);
    makeBoth(L"Hemlar.TalImage16Grey", &CLSID_TalImage16Grey);
    makeBoth(L"Hemlar.TalImage16Range", &CLSID_TalImage16Range);
    load(&LIBID_RENDERENGLib, L"talxrend.tlb");
    load(&LIBID_talxstd, L"talxstd.tlb");
    CoUninitialize();
    return failures;
}
