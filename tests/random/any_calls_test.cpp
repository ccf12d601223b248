// Any calls in any order: lives of random calls of every method of both DLLs, with extreme arguments, and
// with an owner, images and arrays that behave badly. Nothing may crash or hang, errors are told exactly
// where they are promised, and the engine's state is what the calls have made it.
//
// A life that fails is run again without each of its calls in turn and told by the calls that matter. The
// number printed last is that of one that ends the program; TALX_TEST_CASE=N prints its calls as they are
// made.
#include "tests/images/painting.h"
#include "tests/support/event_sink.h"

#include <gtest/gtest-spi.h>
#include <ocidl.h>

#include <set>
#include <sstream>

namespace talx::test {
namespace {

using Engine = ITalRenderEngine2;
using Scaling = ITalRenderEngineScalingParams;
using Targets = ITalRenderTargetAccess;
using Source16 = ITalPelAccessSource16;

struct Life;
struct Call {
    const char* name;
    // How it tells what fails: f with error information; p as f, but E_POINTER without; b without. In
    // capitals when it needs an initialised engine; R is as F, but E_FAIL without; T is as P, and GDI's only.
    char kind;
    HRESULT (*make)(Life& life, Random& r);
};
extern const std::vector<Call> calls;

// An object that an engine is a part of.
struct Outer final : IUnknown {
    ComPtr<IUnknown> part;
    ULONG references = 0;

    STDMETHOD(QueryInterface)(REFIID iid, void** object) override {
        const bool own = iid == IID_IUnknown && object;
        return own ? (AddRef(), *object = this, S_OK) : part->QueryInterface(iid, object);
    }
    STDMETHOD_(ULONG, AddRef)() override { return ++references; }
    STDMETHOD_(ULONG, Release)() override {
        if (--references == 0) {
            references = 1000; // the part may count here while it goes
            delete this;
            return 0;
        }
        return references;
    }
};

long number(Random& r) {
    return r.oneIn(6) ? r.oneOf<long>({least, least + 1, -1, 0, most - 1, most}) : r.between(-5, 60);
}

struct Life {
    explicit Life(Random& r)
        : view(r.oneIn(2), r.oneIn(16) ? realScreen : pick(r, everyFormat),
               r.oneIn(2) ? Calls{} : Calls{"directdraw.QueryInterface"}) {
        view.engine.Reset();
        for (const CLSID& id : {__uuidof(TalImage8Grey), __uuidof(TalImageColor), __uuidof(TalImage16Grey),
                                __uuidof(TalImage16Range)}) {
            images.push_back(createObject<ITalImageMemory>(imageModule(), id));
        }
        sink.answer = [this](const LayerEvent&) {
            misbehave();
        };
    }
    ~Life() { view.engine.Reset(); }

    // A new engine, by itself or as a part of another object, and mostly initialised.
    void begin(Random& r) {
        ComPtr<IClassFactory> factory;
        const ComPtr<Outer> outer(new Outer);
        EXPECT_EQ(S_OK, classObject(engineModule(), view.classId(), IID_PPV_ARGS(&factory)));
        EXPECT_EQ(S_OK, factory->CreateInstance(outer.Get(), IID_PPV_ARGS(&outer->part)));
        if (r.oneIn(2)) {
            EXPECT_EQ(S_OK, outer.As(&view.engine));
        } else {
            view.engine = view.newEngine();
        }
        initialized = maskEnabled = false;
        width = height = layers = method = maskColor = 0;
        if (!r.oneIn(4)) {
            initialized =
                SUCCEEDED(view.engine->Initialize(reinterpret_cast<__int64>(view.window()), 40, 30));
            width = initialized ? 40 : 0;
            height = initialized ? 30 : 0;
        }
    }
    void make(const Call& call, Random& r) {
        if (!view.engine || (call.kind == 'T' && view.directDraw)) {
            return;
        }
        SetErrorInfo(0, nullptr);
        const bool wasInitialized = initialized;
        random = &r;
        ++depth;
        const HRESULT hr = call.make(*this, r);
        --depth;
        const bool bare = call.kind == 'b' || (strchr("pT", call.kind) && hr == E_POINTER) ||
                          (call.kind == 'R' && hr == E_FAIL);
        EXPECT_EQ(FAILED(hr) && !bare, takeErrorInfo().present) << call.name << std::hex << " " << hr;
        EXPECT_EQ(isupper(call.kind) && !wasInitialized, hr == static_cast<HRESULT>(0x80044001)) << call.name;
    }
    // What an owner's code, or an image's, does when the engine calls it.
    void misbehave() {
        for (int i = depth > 2 ? 0 : random->between(0, 2); i > 0; --i) {
            make(pick(*random, calls), *random);
        }
    }
    void expectState() const {
        long w = -1, h = -1, count = -1;
        VARIANT_BOOL is = 5, mask = 5;
        OLE_COLOR color = 5;
        TalRenderEngineScalingMethodConstants m{};
        ComPtr<Scaling> scaling;
        EXPECT_TRUE(view.engine->GetExtent(&w, &h) == S_OK && w == width && h == height) << w << " x " << h;
        EXPECT_TRUE(view.engine->get_Initialized(&is) == S_OK && is == (initialized ? VARIANT_TRUE : 0));
        EXPECT_TRUE(view.engine->get_Layers(&count) == S_OK && count == layers);
        EXPECT_TRUE(view.engine.As(&scaling) == S_OK && scaling->get_ScalingMethod(&m) == S_OK &&
                    m == method);
        EXPECT_TRUE(view.engine->get_VisiblePixelMaskEnable(&mask) == S_OK && mask == maskEnabled);
        EXPECT_TRUE(view.engine->get_VisiblePixelMaskColor(&color) == S_OK && color == maskColor);
    }
    // Whatever has such an interface. The engine's own is not held: it may go meanwhile.
    template <class Interface>
    Interface* object(Random& r, ComPtr<Interface>& held) const {
        if constexpr (std::is_base_of_v<Interface, Engine>) {
            return view.engine.Get();
        } else if constexpr (std::is_same_v<Interface, ITalPelAccess>) {
            held = access;
        } else {
            constexpr bool classInfo =
                std::is_same_v<Interface, IProvideClassInfo>; // answered as its successor only
            view.engine->QueryInterface(classInfo ? IID_IProvideClassInfo2 : __uuidof(Interface),
                                        reinterpret_cast<void**>(held.GetAddressOf()));
            for (unsigned i = r.word() % 4; !held; ++i) {
                images[i % 4].As(&held);
            }
        }
        return held.Get();
    }

    EngineView view; // without an engine at first
    EventSink sink;
    std::vector<ComPtr<IPictureDisp>> pictures;
    std::vector<ComPtr<ITalImageMemory>> images;
    ComPtr<ITalPelAccess> access;
    BYTE memory[1 << 15]{};
    Random* random = nullptr; // of the call that is being made
    int depth = 0;
    // What the engine must answer.
    bool initialized = false, maskEnabled = false;
    long width = 0, height = 0, layers = 0, method = 0;
    OLE_COLOR maskColor = 0;
};

// A random argument of a parameter's type.
struct Context {
    Life& life;
    Random& r;
};
template <class T>
struct Argument {
    explicit Argument(Context c) : value(static_cast<T>(number(c.r))) {}
    T value;
};
template <>
struct Argument<DWORD> {
    explicit Argument(Context c) : value(c.r.oneIn(2) ? c.r.between(0, 2) : c.r.word()) {}
    DWORD value;
};
template <>
struct Argument<double> {
    explicit Argument(Context c)
        : value(c.r.oneIn(2) ? c.r.oneOf({1.0, 2.0, 1e300, -0.5, 0.0, 1e-9, notANumber, infinity, -infinity})
                             : c.r.real(-5, 30)) {}
    double value;
};
template <>
struct Argument<__int64> { // handles
    explicit Argument(Context c)
        : value(c.r.oneOf<__int64>({0, number(c.r), reinterpret_cast<__int64>(c.life.view.window())})) {}
    __int64 value;
};
template <>
struct Argument<REFGUID> {
    explicit Argument(Context c)
        : value(c.r.oneOf<GUID>(
              {IID_IUnknown, IID_IDispatch, __uuidof(Targets), IID_ISupportErrorInfo, GUID_NULL})) {}
    GUID value;
};
template <class T>
struct Argument<T*> { // what is stored through it
    explicit Argument(Context c) : value(c.r.oneIn(6) ? nullptr : &target) {}
    T target{};
    T* value;
};
template <class T>
requires std::is_base_of_v<IUnknown, T> || std::is_void_v<T>
struct Argument<T**> {
    explicit Argument(Context c) : life(c.life), value(c.r.oneIn(6) ? nullptr : &target) {}
    ~Argument() {
        if constexpr (std::is_same_v<T, ITalPelAccess>) {
            life.access = target;
        } else if constexpr (std::is_same_v<T, IPictureDisp>) {
            target ? life.pictures.push_back(target) : void();
        }
        target ? static_cast<IUnknown*>(target)->Release() : 0;
    }
    Life& life;
    T* target = nullptr;
    T** value;
};
template <>
struct Argument<IUnknown*> {
    explicit Argument(Context) {}
    IUnknown* value = nullptr;
};
template <>
struct Argument<ITalRenderEngineEvents*> {
    explicit Argument(Context c) : value(c.r.oneIn(6) ? nullptr : &c.life.sink) {
        c.life.sink.result = c.r.oneOf({S_OK, E_FAIL});
    }
    ITalRenderEngineEvents* value;
};
template <>
struct Argument<IPictureDisp*> {
    explicit Argument(Context c) {
        if (!c.life.pictures.empty() && !c.r.oneIn(3)) {
            value = pick(c.r, c.life.pictures).Get(); // held by the life
        }
    }
    IPictureDisp* value = nullptr;
};
// An array that an owner should not pass, or should; or where to put one.
template <>
struct Argument<SAFEARRAY**> {
    explicit Argument(Context c)
        : array(c.r.oneOf<VARTYPE>({VT_I4, VT_I4, VT_UI1, VT_UI1, VT_I2, VT_R8}),
                c.r.oneOf<ULONG>({0, 1, 255, 256, 256, 300}), c.r.oneOf<LONG>({0, 0, -3, least, most - 299}),
                c.r.oneOf({1, 1, 1, 2})),
          passed(c.r.oneIn(6) ? nullptr : &copy.first), value(c.r.oneIn(6) ? nullptr : &passed) {
        std::memcpy(&copy, array.array, sizeof(SAFEARRAY) + (array.array->cDims - 1) * sizeof copy.second);
        copy.first.pvData = c.r.oneIn(5) ? nullptr : copy.first.pvData;
        copy.first.cLocks = locks = c.r.oneIn(5) ? 0xFFFF : 0;
    }
    ~Argument() {
        const bool replaced = passed && passed != &copy.first;
        EXPECT_TRUE(replaced ? SafeArrayDestroy(passed) == S_OK : copy.first.cLocks == locks);
    }
    TestArray array;
    struct {
        SAFEARRAY first;
        SAFEARRAYBOUND second;
    } copy;
    SAFEARRAY *passed, **value;
    ULONG locks;
};
// The library's, or one that fails, or whose code misbehaves and changes its answers at some step. There is
// always memory for them.
template <class T>
requires std::is_base_of_v<ITalImage, T>
struct Argument<T*> {
    explicit Argument(Context c)
        : twin(c.r, store,
               std::is_same_v<T, ITalImage> ? static_cast<model::Kind>(c.r.between(0, 3)) : model::Kind{},
               c.r.between(1, 40), c.r.between(1, 40), c.r.oneIn(2), c.r.between(0, 6)),
          value(c.life.object(c.r, library)) {
        value = c.r.oneIn(8) ? nullptr : c.r.oneIn(4) ? value : static_cast<T*>(twin.image->icon());
        if (c.r.oneIn(2)) {
            twin.image->fault = {static_cast<ImageStep>(c.r.between(1, 9)),
                                 c.r.oneOf({S_OK, E_FAIL, ownFailure}),
                                 c.r.between(0, 2),
                                 c.r.oneIn(2),
                                 {}};
        }
        if (c.r.oneIn(2)) {
            twin.image->fault.instead = [this, c, w = twin.image->width, h = twin.image->height] {
                twin.image->width = c.r.between(-1, w);
                twin.image->height = c.r.between(-1, h);
                twin.image->depthCode = c.r.between(0, 6);
                c.life.misbehave();
            };
        }
    }
    const ImageStore store;
    TwinImage twin;
    ComPtr<T> library;
    T* value;
};

struct NothingToNote {
    void operator()(auto&&...) const {}
};
// A call of a method with random arguments. note keeps what the engine must answer afterwards.
template <auto method, auto note = NothingToNote()>
HRESULT any(Life& life, Random& r) {
    return [&]<class Interface, class... Types>(HRESULT (STDMETHODCALLTYPE Interface::*)(Types...)) {
        ComPtr<Interface> held;
        Interface* const object = life.object(r, held);
        std::tuple<Argument<Types>...> arguments((static_cast<void>(sizeof(Types)), Context{life, r})...);
        const auto make = [&](auto&... argument) {
            const HRESULT hr = object ? (object->*method)(argument.value...) : S_OK;
            note(life, hr, argument.value...);
            return hr;
        };
        return std::apply(make, arguments);
    }(method);
}

HRESULT allocate(Life& life, Random& r) { // a little, or what nobody has
    const long sides[] = {r.between(-1, 60), r.between(-1, 60)}, hopeless[] = {most, most};
    const auto& [w, h] = r.oneIn(5) ? hopeless : sides;
    return pick(r, life.images)->Allocate(w, h, r.between(-1, 4));
}
HRESULT wrap(Life& life, Random& r) {
    const long w = r.between(-1, 60), stride = r.oneOf({-2, 2}) * r.between(w, 120);
    const auto data = r.oneIn(6) ? 0 : reinterpret_cast<__int64>(&life.memory[1 << 14]);
    return pick(r, life.images)->Wrap(r.between(-1, 3), w, r.between(-1, 60), data, stride, nullptr);
}
HRESULT queryInterface(Life& life, Random& r) {
    const IID iids[] = {IID_IUnknown, IID_IDispatch, __uuidof(Targets), __uuidof(Engine),
                        IID_ISupportErrorInfo};
    ComPtr<IUnknown> object;
    return life.view.engine->QueryInterface(
        pick(r, iids), reinterpret_cast<void**>(r.oneIn(6) ? nullptr : object.GetAddressOf()));
}
HRESULT createInstance(Life& life, Random& r) {
    const CLSID classes[] = {__uuidof(TalGDIRenderEngine), __uuidof(TalImageColor), IID_IUnknown};
    ComPtr<IClassFactory> factory;
    ComPtr<IUnknown> object;
    EXPECT_EQ(S_FALSE, exported<HRESULT WINAPI()>(engineModule(), "DllCanUnloadNow")());
    const HRESULT hr =
        classObject(r.oneIn(2) ? engineModule() : imageModule(), pick(r, classes), IID_PPV_ARGS(&factory));
    return FAILED(hr) || factory->LockServer(TRUE) != S_OK || factory->LockServer(FALSE) != S_OK
               ? hr
               : factory->CreateInstance(r.oneIn(3) ? life.view.engine.Get() : nullptr,
                                         r.oneIn(3) ? IID_IDispatch : IID_IUnknown, &object);
}
HRESULT changeDisplay(Life& life, Random& r) {
    if (life.view.display) {
        for (const auto& [name, surface] : life.view.display->surfaces) {
            surface->lost = r.oneIn(2);
        }
        life.view.display->refuse = {
            r.oneOf({"buffer.", "primary.", "texture.", "device.", "direct", "none"})};
    }
    return S_OK;
}
HRESULT release(Life& life, Random&) {
    life.view.engine.Reset();
    return S_OK;
}

#define CALL(kind, interface, method, ...)                                                                   \
    { #method, kind, any < &interface::method __VA_OPT__(, ) __VA_ARGS__> }
const std::vector<Call> calls = {
    CALL('f', Engine, Initialize,
         [](Life& l, HRESULT hr, __int64, long w, long h) {
             if (SUCCEEDED(hr) && !std::exchange(l.initialized, true)) {
                 l.width = w;
                 l.height = h;
             }
         }),
    CALL('F', Engine, SetExtent,
         [](Life& l, HRESULT hr, long w, long h) {
             l.width = SUCCEEDED(hr) ? w : 0;
             l.height = SUCCEEDED(hr) ? h : 0;
         }),
    CALL('b', Engine, put_Layers, [](Life& l, HRESULT, long n) { l.layers = n; }),
    CALL('b', Scaling, put_ScalingMethod, [](Life& l, HRESULT, long m) { l.method = m; }),
    CALL('b', Engine, put_VisiblePixelMaskEnable, [](Life& l, HRESULT, int is) { l.maskEnabled = is != 0; }),
    CALL('b', Engine, put_VisiblePixelMaskColor, [](Life& l, HRESULT, OLE_COLOR c) { l.maskColor = c; }),
    CALL('F', Engine, DrawImage),
    CALL('F', Engine, DrawIcon8),
    CALL('F', Engine, Fill),
    CALL('F', Engine, GetDrawContext),
    CALL('R', Engine, ReleaseDrawContext),
    CALL('F', Engine, RefreshScreen),
    CALL('f', Engine, BeginLayerUpdate),
    CALL('f', Engine, EndLayerUpdate),
    CALL('b', Engine, AdviseRenderEvents),
    CALL('b', Engine, UnAdvise),
    CALL('f', Engine, PaletteChange),
    CALL('f', Engine, GetExtent),
    CALL('f', Engine, get_Initialized),
    CALL('b', Engine, get_Layers),
    CALL('b', Engine, DumpInfo),
    CALL('b', Engine, get_Image8GreyColorMap),
    CALL('f', Engine, put_Image8GreyColorMap),
    CALL('p', Engine, get_Image8GreyWholeColorMap),
    CALL('p', Engine, put_Image8GreyWholeColorMap),
    CALL('f', Engine, ClearImage8GreyColorMap),
    CALL('p', Engine, get_Image16GreyColorMap),
    CALL('p', Engine, put_Image16GreyColorMap),
    CALL('f', Engine, ClearImage16GreyColorMap),
    CALL('p', Engine, get_Image16RangeColorMap),
    CALL('p', Engine, put_Image16RangeColorMap),
    CALL('f', Engine, ClearImage16RangeColorMap),
    CALL('f', Engine, UnsetColorMaps),
    CALL('b', Engine, get_VisiblePixelMaskEnable),
    CALL('b', Engine, get_VisiblePixelMaskColor),
    CALL('b', Scaling, get_ScalingMethod),
    CALL('T', Targets, SetRenderTargetFromHDC),
    CALL('T', Targets, SetRenderTargetFromDIB),
    CALL('T', Targets, CreateDIBRenderTarget),
    {"QueryInterface", 'b', queryInterface},
    CALL('b', ISupportErrorInfo, InterfaceSupportsErrorInfo),
    CALL('b', IProvideClassInfo2, GetClassInfo),
    CALL('b', IProvideClassInfo2, GetGUID),
    CALL('f', ITalImage, get_Width),
    CALL('f', ITalImage, get_Height),
    CALL('f', ITalImage16Grey, put_DepthCode),
    CALL('f', ITalImage16Grey, get_DepthCode),
    CALL('f', ITalImageColor, GetPlane),
    CALL('f', ITalImage16Range, CreatePelAccesses),
    CALL('f', ITalPelAccessSource, CreatePelAccess),
    CALL('f', Source16, CreatePelAccess),
    CALL('f', ITalImageMemory, CreatePlaneAccess),
    CALL('f', ITalPelAccess, get_Data),
    CALL('f', ITalPelAccess, get_RowStride),
    CALL('f', ITalPelAccess, Unlock),
    {"Allocate", 'f', allocate},
    {"Wrap", 'f', wrap},
    {"CreateInstance", 'b', createInstance},
    {"(the display changes)", 'b', changeDisplay},
    {"(the owner lets go)", 'b', release}};

// Lives some calls of a life, by their numbers from 1 on, and returns what fails; story gets their names.
std::string live(const std::vector<unsigned>& seeds, const std::set<int>& kept, std::ostringstream& story) {
    testing::TestPartResultArray failures;
    const testing::ScopedFakeTestPartResultReporter reporter(
        testing::ScopedFakeTestPartResultReporter::INTERCEPT_ALL_THREADS, &failures);
    {
        Random birth(seeds[0]);
        Life life(birth);
        for (auto i = kept.begin(); i != kept.end() && failures.size() == 0; ++i) {
            Random r(seeds[*i]);
            if (!life.view.engine) {
                life.begin(r);
            }
            const Call& call = calls[r.between(0, r.oneIn(3) ? 15 : static_cast<int>(calls.size()) - 1)];
            story << "\n" << *i << " " << call.name;
            if (onlyCase() >= 0) {
                printf("%d %s\n", *i, call.name);
                fflush(stdout);
            }
            life.make(call, r);
            if (life.view.engine) {
                life.expectState();
            }
        }
    }
    return failures.size() > 0 ? failures.GetTestPartResult(0).message() : "";
}

TEST(AnyCalls, InAnyOrderDoNoHarm) {
    printf("--gtest_random_seed=%d, lives", testing::UnitTest::GetInstance()->random_seed());
    runCases(150, [](Random& random, unsigned number) {
        printf(" %u", number);
        fflush(stdout);
        std::vector<unsigned> seeds(61);
        std::set<int> kept;
        for (unsigned& seed : seeds) {
            seed = random.word();
            kept.insert(static_cast<int>(&seed - seeds.data()));
        }
        kept.erase(0);
        std::ostringstream story, unused;
        std::string failure = live(seeds, kept, story);
        for (int i = failure.empty() ? 0 : 60; i > 0; --i) {
            std::set<int> fewer = kept;
            fewer.erase(i);
            kept = live(seeds, fewer, unused).empty() ? kept : fewer;
        }
        if (!failure.empty()) {
            story.str("");
            failure = live(seeds, kept, story);
        }
        EXPECT_EQ("", failure) << "after the calls" << story.str();
    });
}

} // namespace
} // namespace talx::test
