// Any calls in any order: lives of random calls of every method of both DLLs, with extreme arguments, and
// with an owner, images and arrays that behave badly. Nothing may crash or hang, errors are told exactly
// where they are promised, and the engine's state is what the calls have made it.
//
// A life ends with the first call that fails, and is told by its calls. The number printed last is that of
// one that ends the program; TALX_TEST_CASE=N prints its calls as they are made, and scripts/cut-life leaves
// out those that do not matter.
#include "tests/images/painting.h"
#include "tests/support/event_sink.h"
#include "tests/support/stack_object.h"

#include <ocidl.h>

#include <iterator>
#include <set>
#include <sstream>

namespace talx::test {
namespace {

using Engine = ITalRenderEngine2;
using Scaling = ITalRenderEngineScalingParams;
using Targets = ITalRenderTargetAccess;

struct Life;
struct Call {
    // How it tells what fails: f with error information; p as f, but E_POINTER without; b without. In
    // capitals when it needs an initialised engine; R is as F, but E_FAIL without; T is as P, and GDI's only.
    char kind;
    const char* name;
    HRESULT (*make)(Life& life, Random& r);
};
extern const std::vector<std::vector<Call>> calls;

// What an engine answers that calls have made so.
struct State {
    VARIANT_BOOL initialized = 0, maskEnabled = 0;
    long width = 0, height = 0, layers = 0;
    TalRenderEngineScalingMethodConstants method{};
    OLE_COLOR maskColor = 0;

    static State of(Engine* engine) {
        State s{5, 5, -1, -1, -1, {}, 5};
        ComPtr<Scaling> scaling;
        EXPECT_EQ(S_OK, engine->QueryInterface(IID_PPV_ARGS(&scaling)));
        EXPECT_EQ(S_OK, engine->get_Initialized(&s.initialized));
        EXPECT_EQ(S_OK, engine->get_VisiblePixelMaskEnable(&s.maskEnabled));
        EXPECT_EQ(S_OK, engine->GetExtent(&s.width, &s.height));
        EXPECT_EQ(S_OK, engine->get_Layers(&s.layers));
        EXPECT_EQ(S_OK, scaling->get_ScalingMethod(&s.method));
        EXPECT_EQ(S_OK, engine->get_VisiblePixelMaskColor(&s.maskColor));
        return s;
    }
    bool operator==(const State&) const = default;
};

long number(Random& r) {
    return r.oneIn(6) ? r.oneOf<long>({least, least + 1, -1, 0, most - 1, most}) : r.between(-5, 60);
}

struct Life {
    explicit Life(Random& r)
        : view(r.oneIn(2), r.oneIn(16) ? realScreen : pick(r, everyFormat),
               r.oneIn(2) ? Calls{} : Calls{"directdraw.QueryInterface"}),
          random(r) {
        view.engine.Reset();
        for (const CLSID& id : imageClasses) {
            images.push_back(createObject<ITalImageMemory>(imageModule(), id));
        }
        sink.answer = [this](const LayerEvent&) {
            sink.result = random.oneOf({S_OK, E_FAIL});
            misbehave();
        };
    }
    ~Life() { view.engine.Reset(); }

    void begin() {
        view.engine = view.newEngine();
        state = {};
        if (!random.oneIn(4) && SUCCEEDED(view.engine->Initialize(window(), 40, 30))) {
            state = {VARIANT_TRUE, 0, 40, 30, 0, {}, 0};
        }
    }
    void make(const Call& call) {
        if (!view.engine || (call.kind == 'T' && view.directDraw)) {
            return;
        }
        if (onlyCase() >= 0) {
            printf("%*s%s\n", depth, "", call.name);
            fflush(stdout);
        }
        SetErrorInfo(0, nullptr);
        const bool wasInitialized = state.initialized != 0;
        ++depth;
        const HRESULT hr = call.make(*this, random);
        --depth;
        const bool bare = call.kind == 'b' || (strchr("pT", call.kind) && hr == E_POINTER) ||
                          (call.kind == 'R' && hr == E_FAIL);
        const ErrorInfo info = takeErrorInfo();
        const bool refused = isupper(call.kind) && !wasInitialized;
        EXPECT_EQ(FAILED(hr) && !bare, info.present) << call.name << std::hex << " " << hr;
        EXPECT_EQ(refused, hr == static_cast<HRESULT>(0x80044001)) << call.name;
        EXPECT_EQ(refused, info.description == L"Engine uninitialized.") << call.name;
    }
    // What an owner's code, or an image's, does when the engine calls it.
    void misbehave() {
        for (int i = depth > 2 ? 0 : random.between(0, 2); i > 0; --i) {
            make(pick(random, pick(random, calls)));
        }
    }
    static __int64 window() { return reinterpret_cast<__int64>(EngineView::window()); }
    // Whatever has such an interface. The engine's own is not held: it may go meanwhile.
    template <class Interface>
    Interface* object(ComPtr<Interface>& held) const {
        // What has only the successor's identifier answers as both.
        constexpr bool classInfo = std::is_same_v<Interface, IProvideClassInfo>;
        const IID& iid = classInfo ? IID_IProvideClassInfo2 : __uuidof(Interface);
        if constexpr (std::is_base_of_v<Interface, Engine>) {
            return view.engine.Get();
        } else if constexpr (std::is_same_v<Interface, ITalPelAccess>) {
            held = access;
        } else if constexpr (std::is_same_v<Interface, IClassFactory>) {
            classObject(random.oneIn(2) ? engineModule() : imageModule(),
                        random.oneIn(2) ? __uuidof(TalGDIRenderEngine) : pick(random, imageClasses), iid,
                        reinterpret_cast<void**>(held.GetAddressOf()));
        } else {
            view.engine->QueryInterface(iid, reinterpret_cast<void**>(held.GetAddressOf()));
            for (unsigned i = random.word() % 4; !held; ++i) {
                images[i % 4].As(&held);
            }
        }
        return held.Get();
    }

    static constexpr CLSID imageClasses[] = {__uuidof(TalImage8Grey), __uuidof(TalImageColor),
                                             __uuidof(TalImage16Grey), __uuidof(TalImage16Range)};
    EngineView view; // without an engine at first
    Random& random;
    EventSink sink;
    StackObject<IUnknown> outer;
    std::vector<ComPtr<IPictureDisp>> pictures;
    std::vector<ComPtr<ITalImageMemory>> images;
    ComPtr<ITalPelAccess> access;
    BYTE memory[1 << 15]{};
    int depth = 0;
    State state; // that the engine must be in
};

template <class T>
concept Face = std::is_base_of_v<IUnknown, T>;
template <class T>
concept Image = Face<T> && std::is_base_of_v<ITalImage, T>;

// A random argument of a parameter's type.
template <class T>
struct Argument {
    explicit Argument(Life& life) : value(static_cast<T>(number(life.random))) {}
    T value;
};
template <>
struct Argument<double> {
    explicit Argument(Life& life)
        : value(pick(life.random, std::array{1.0, 2.0, -0.5, life.random.real(-5, 30), life.random.real(0, 3),
                                             1e300, notANumber, -infinity})) {}
    double value;
};
template <>
struct Argument<__int64> { // handles
    explicit Argument(Life& life)
        : value(life.random.oneOf<__int64>({0, number(life.random), Life::window()})) {}
    __int64 value;
};
template <>
struct Argument<REFGUID> {
    explicit Argument(Life& life)
        : value(life.random.oneOf<GUID>({IID_IUnknown, IID_IDispatch, __uuidof(Targets), GUID_NULL})) {}
    GUID value;
};
template <class T>
struct Argument<T*> { // where something is stored
    explicit Argument(Life& life) : value(life.random.oneIn(6) ? nullptr : &target) {}
    T target{};
    T* value;
};
template <class T>
requires Face<T> || std::is_void_v<T>
struct Argument<T**> {
    explicit Argument(Life& l) : life(l), value(life.random.oneIn(6) ? nullptr : &target) {}
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
template <Face T>
struct Argument<T*> {
    explicit Argument(Life& life) {
        if constexpr (std::is_same_v<T, ITalRenderEngineEvents>) {
            value = &life.sink;
        } else if constexpr (std::is_same_v<T, IUnknown>) {
            value = &life.outer; // of an aggregate, or what keeps memory alive
        } else if constexpr (std::is_same_v<T, IPictureDisp>) {
            value = life.pictures.empty() ? nullptr : life.pictures.back().Get(); // held by the life
        }
        value = life.random.oneIn(6) ? nullptr : value;
    }
    T* value = nullptr;
};
// An array that an owner should not pass, or should; or where to put one.
template <>
struct Argument<SAFEARRAY**> {
    explicit Argument(Life& life)
        : r(life.random), array(r.oneOf<VARTYPE>({VT_I4, VT_I4, VT_UI1, VT_UI1, VT_R8}),
                                r.oneOf<ULONG>({0, 1, 255, 256, 256, 300}), r.oneOf<LONG>({0, -3, least})),
          copy(*array.array), passed(r.oneIn(6) ? nullptr : &copy), value(r.oneIn(6) ? nullptr : &passed) {
        copy.pvData = r.oneIn(5) ? nullptr : copy.pvData;
        copy.cLocks = locks = r.oneIn(5) ? 0xFFFF : 0;
    }
    ~Argument() {
        const bool replaced = passed && passed != &copy;
        EXPECT_TRUE(replaced ? SafeArrayDestroy(passed) == S_OK : copy.cLocks == locks);
    }
    Random& r;
    TestArray array;
    SAFEARRAY copy, *passed, **value;
    ULONG locks;
};
// The library's, or one that fails, or whose code misbehaves and changes its answers at some step. There is
// always memory for them.
template <Image T>
struct Argument<T*> {
    explicit Argument(Life& life)
        : r(life.random),
          twin(r, store, static_cast<model::Kind>(std::is_same_v<T, ITalImage> ? r.between(0, 3) : 0),
               r.between(1, 40), r.between(1, 40), r.oneIn(2), r.between(0, 6)) {
        T* const own = static_cast<T*>(twin.image->icon());
        value = r.oneIn(8) ? nullptr : r.oneIn(4) ? life.object(library) : own;
        const HRESULT result = r.oneOf({S_OK, E_FAIL, ownFailure});
        twin.image->fault = {
            static_cast<ImageStep>(r.between(-9, 9)), result, r.between(0, 2), r.oneIn(2), {}};
        if (r.oneIn(2)) {
            twin.image->fault.instead = [&life, &image = *twin.image, w = twin.twin.planes[0].width] {
                image.width = life.random.between(-1, w);
                image.height = life.random.between(-1, image.height);
                image.depthCode = life.random.between(0, 6);
                life.misbehave();
            };
        }
    }
    Random& r;
    const ImageStore store;
    TwinImage twin;
    ComPtr<T> library;
    T* value = nullptr;
};

struct NothingToNote {
    void operator()(auto&&...) const {}
};
// A call of a method with random arguments. note keeps what the engine must answer afterwards.
template <auto method, auto note = NothingToNote()>
HRESULT any(Life& life, Random&) {
    return [&]<class Interface, class... Types>(HRESULT (STDMETHODCALLTYPE Interface::*)(Types...)) {
        ComPtr<Interface> held;
        Interface* const object = life.object(held);
        // NOLINTNEXTLINE(bugprone-sizeof-expression): as many lives as types
        std::tuple<Argument<Types>...> arguments((static_cast<void>(sizeof(Types)), std::ref(life))...);
        const auto make = [&](auto&... argument) {
            const HRESULT hr = object ? (object->*method)(argument.value...) : S_OK;
            note(life.state, hr, argument.value...);
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
    // An engine that is inside a method stays until its end.
    EXPECT_TRUE(life.depth == 1 ||
                exported<HRESULT WINAPI()>(engineModule(), "DllCanUnloadNow")() == S_FALSE);
    return S_OK;
}

void noteExtent(State& s, HRESULT hr, long w, long h) {
    s.width = SUCCEEDED(hr) ? w : 0;
    s.height = SUCCEEDED(hr) ? h : 0;
}
void noteInitialize(State& s, HRESULT hr, __int64, long w, long h) {
    if (SUCCEEDED(hr) && !std::exchange(s.initialized, VARIANT_TRUE)) {
        noteExtent(s, hr, w, h);
    }
}

// Of a property. What is stored of a truth value is whether it holds.
template <auto field>
struct Stored {
    void operator()(State& s, HRESULT, auto value) const {
        if constexpr (std::is_same_v<decltype(value), VARIANT_BOOL>) {
            s.*field = value != 0;
        } else {
            s.*field = value;
        }
    }
};
template <auto method>
const char* nameOf() {
    return __PRETTY_FUNCTION__;
}
// Calls of one kind of which nothing is to be noted.
template <auto... methods>
std::vector<Call> all(char kind) {
    return {{kind, nameOf<methods>(), any<methods>}...};
}
constexpr HRESULT (STDMETHODCALLTYPE IUnknown::*query)(REFIID, void**) = &IUnknown::QueryInterface;
// One group is as likely as another.
const std::vector<std::vector<Call>> calls = {
    {{'f', "Initialize", any<&Engine::Initialize, noteInitialize>},
     {'F', "SetExtent", any<&Engine::SetExtent, noteExtent>},
     {'b', "put_Layers", any<&Engine::put_Layers, Stored<&State::layers>{}>},
     {'b', "put_ScalingMethod", any<&Scaling::put_ScalingMethod, Stored<&State::method>{}>},
     {'b', "put_VisiblePixelMaskEnable",
      any<&Engine::put_VisiblePixelMaskEnable, Stored<&State::maskEnabled>{}>},
     {'b', "put_VisiblePixelMaskColor",
      any<&Engine::put_VisiblePixelMaskColor, Stored<&State::maskColor>{}>}},
    all<&Engine::DrawImage, &Engine::DrawIcon8, &Engine::Fill, &Engine::GetDrawContext,
        &Engine::RefreshScreen>('F'),
    all<&Engine::ReleaseDrawContext>('R'),
    all<&Engine::BeginLayerUpdate, &Engine::EndLayerUpdate, &Engine::PaletteChange, &Engine::GetExtent,
        &Engine::get_Initialized, &Engine::put_Image8GreyColorMap, &Engine::ClearImage8GreyColorMap,
        &Engine::ClearImage16GreyColorMap, &Engine::ClearImage16RangeColorMap, &Engine::UnsetColorMaps>('f'),
    all<&Engine::AdviseRenderEvents, &Engine::UnAdvise, &Engine::get_Layers, &Engine::DumpInfo,
        &Engine::get_Image8GreyColorMap, &Engine::get_VisiblePixelMaskEnable,
        &Engine::get_VisiblePixelMaskColor, &Scaling::get_ScalingMethod, query,
        &ISupportErrorInfo::InterfaceSupportsErrorInfo, &IProvideClassInfo2::GetClassInfo,
        &IProvideClassInfo2::GetGUID, &IClassFactory::CreateInstance>('b'),
    all<&Engine::get_Image8GreyWholeColorMap, &Engine::put_Image8GreyWholeColorMap,
        &Engine::get_Image16GreyColorMap, &Engine::put_Image16GreyColorMap, &Engine::get_Image16RangeColorMap,
        &Engine::put_Image16RangeColorMap>('p'),
    all<&Targets::SetRenderTargetFromHDC, &Targets::SetRenderTargetFromDIB, &Targets::CreateDIBRenderTarget>(
        'T'),
    all<&ITalImage::get_Width, &ITalImage::get_Height, &ITalImage16Grey::put_DepthCode,
        &ITalImage16Grey::get_DepthCode, &ITalImageColor::GetPlane, &ITalImage16Range::CreatePelAccesses,
        &ITalPelAccessSource::CreatePelAccess, &ITalPelAccessSource16::CreatePelAccess,
        &ITalImageMemory::CreatePlaneAccess, &ITalPelAccess::get_Data, &ITalPelAccess::get_RowStride,
        &ITalPelAccess::Unlock>('f'),
    {{'f', "Allocate", allocate},
     {'f', "Wrap", wrap},
     {'b', "(the display changes)", changeDisplay},
     {'b', "(the owner lets go)", release}}};

TEST(AnyCalls, InAnyOrderDoNoHarm) {
    printf("--gtest_random_seed=%d, lives", testing::UnitTest::GetInstance()->random_seed());
    const char* const list = std::getenv("TALX_TEST_WITHOUT");
    std::istringstream numbers(list ? list : "");
    const std::set<int> without{std::istream_iterator<int>(numbers), {}};
    runCases(150, [&](Random& random) {
        printf(" %u", random.number);
        fflush(stdout);
        Life life(random);
        for (int i = 0; i < 60 && !testing::Test::HasFailure(); ++i) {
            if (without.contains(i)) {
                continue;
            }
            random.restart(i);
            if (!life.view.engine) {
                life.begin();
            }
            const Call& call = pick(random, pick(random, calls));
            life.make(call);
            EXPECT_TRUE(!life.view.engine || State::of(life.view.engine.Get()) == life.state)
                << i << " " << call.name;
        }
    });
}

} // namespace
} // namespace talx::test
