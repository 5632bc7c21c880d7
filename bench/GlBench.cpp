// Redraws of a level of 10,000 boxes by the OpenGL device, and where their time goes. Only where the benchmarks are
// linked with the windows, and where there is an OpenGL.
#if __has_include(<QOpenGLContext>)

#include <chrono>
#include <ctime>

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLFunctions>

#include "BigLevel.h"
#include "desktop/GlDevice.h"

using namespace big_level;

namespace {

// Passed by the clock, and taken by this thread: a device that draws by the processor takes the cores meanwhile.
struct Seconds {
    double wall = 0, own = 0;

    static Seconds Now() {
        timespec used{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
        constexpr double NANO = 1e-9;
        const std::chrono::duration<double> since = std::chrono::steady_clock::now().time_since_epoch();
        return {since.count(), static_cast<double>(used.tv_sec) + NANO * static_cast<double>(used.tv_nsec)};
    }
    Seconds operator-(const Seconds& start) const { return {wall - start.wall, own - start.own}; }
    void operator+=(const Seconds& more) { wall += more.wall, own += more.own; }
};

class Timer { // adds to a sum
public:
    explicit Timer(Seconds& to) : sum(to) {}
    ~Timer() { sum += Seconds::Now() - start; }

private:
    Seconds& sum;
    Seconds start = Seconds::Now();
};

// The device, with seconds by kind of call.
class TimedDevice : public GlDevice {
public:
    using GlDevice::GlDevice;
    Seconds frame, state, upload, draw, finish;
    uint32_t draws = 0, uploads = 0;

    bool SetRenderState(uint32_t index, uint32_t value) override {
        const Timer timer(state);
        return GlDevice::SetRenderState(index, value);
    }
    bool SetTextureStageState(uint32_t stage, uint32_t type, uint32_t value) override {
        const Timer timer(state);
        return GlDevice::SetTextureStageState(stage, type, value);
    }
    bool SetTexture(uint32_t stage, DeviceSurface* texture) override {
        const Timer timer(state);
        return GlDevice::SetTexture(stage, texture);
    }
    std::unique_ptr<DeviceMesh> CreateMesh(MeshData data) override {
        const Timer timer(upload);
        ++uploads;
        return GlDevice::CreateMesh(std::move(data));
    }
    bool DrawMesh(DeviceMesh& mesh, std::span<const MeshPart> parts) override {
        const Timer timer(draw);
        ++draws;
        return GlDevice::DrawMesh(mesh, parts);
    }
    bool BeginScene() override {
        const Timer timer(frame);
        return GlDevice::BeginScene();
    }
    bool Clear(uint32_t clear_flags, uint32_t color, float depth, uint32_t stencil) override {
        const Timer timer(frame);
        return GlDevice::Clear(clear_flags, color, depth, stencil);
    }
    bool EndScene() override {
        const bool ended = EndFrame();
        const Timer timer(finish);
        QOpenGLContext::currentContext()->functions()->glFinish();
        return ended;
    }

private:
    bool EndFrame() {
        const Timer timer(frame);
        return GlDevice::EndScene();
    }
};

QGuiApplication& Application() {
    static int count = 1;
    static char name[] = "bench", *names[] = {name, nullptr};
    static QGuiApplication application(count, names);
    return application;
}

struct Context {
    Context() {
        QSurfaceFormat format;
        format.setVersion(3, 3);
        format.setProfile(QSurfaceFormat::CoreProfile);
        surface.setFormat(format);
        surface.create();
        context.setFormat(format);
        usable = context.create() && context.makeCurrent(&surface);
    }
    QGuiApplication& application = Application(); // before what needs it
    QOffscreenSurface surface;
    QOpenGLContext context;
    bool usable = false;
};

} // namespace

// The four views of a window of 1920 by 1080. range(0): selected boxes that move between two redraws. The counters are
// milliseconds of a redraw: finish is the card's own time, culling what this thread takes to look for what is seen and
// to make meshes of what has changed.
static void FourViewsByOpenGl(benchmark::State& bench) {
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        bench.SkipWithError("no display");
        return;
    }
    Context context;
    if (!context.usable) {
        bench.SkipWithError("no OpenGL 3.3");
        return;
    }
    TimedDevice device(&context.context);
    Screen screen(device, 1920, 1080);
    SetTextures(true);
    TheLevel().SetMaterial(1);
    Moving moving(static_cast<int>(bench.range(0)));
    RedrawViews(screen); // makes what is kept
    device.frame = device.state = device.upload = device.draw = device.finish = {};
    device.draws = device.uploads = 0;
    const Seconds start = Seconds::Now();
    for (auto _ : bench) {
        moving.Step();
        RedrawViews(screen);
    }
    Seconds culling = Seconds::Now() - start;
    const auto each = [&bench](const char* name, double sum) {
        bench.counters[name] = sum / static_cast<double>(bench.iterations());
    };
    const auto tell = [&](const char* name, const Seconds& sum) {
        each(name, 1000 * sum.wall);
        culling.own -= sum.own;
    };
    tell("frame", device.frame);
    tell("state", device.state);
    tell("upload", device.upload);
    tell("draw", device.draw);
    tell("finish", device.finish);
    each("culling", 1000 * culling.own);
    each("draws", device.draws);
    each("uploads", device.uploads);
    TheLevel().SetMaterial(0);
}
BENCHMARK(FourViewsByOpenGl)->Arg(0)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

#endif
