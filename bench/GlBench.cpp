// Redraws of a level of 10,000 boxes by the OpenGL device, and where their time goes. Only where the benchmarks are
// linked with the windows, and where there is an OpenGL.
#if __has_include(<QOpenGLContext>)

#include <chrono>

#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLFunctions>

#include "BigLevel.h"
#include "desktop/GlDevice.h"

using namespace big_level;

namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

class Timer { // adds to a sum
public:
    explicit Timer(double& to) : sum(to) {}
    ~Timer() { sum += SecondsSince(start); }

private:
    double& sum;
    Clock::time_point start = Clock::now();
};

// The device, with seconds by kind of call.
class TimedDevice : public GlDevice {
public:
    using GlDevice::GlDevice;
    double state = 0, upload = 0, draw = 0, finish = 0;
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
    bool EndScene() override {
        const bool ended = GlDevice::EndScene();
        const Timer timer(finish);
        QOpenGLContext::currentContext()->functions()->glFinish();
        return ended;
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
// milliseconds of a redraw: finish is the card's own time, the rest of the time looks for what is seen.
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
    device.state = device.upload = device.draw = device.finish = 0;
    device.draws = device.uploads = 0;
    const Clock::time_point start = Clock::now();
    for (auto _ : bench) {
        moving.Step();
        RedrawViews(screen);
    }
    const double whole = SecondsSince(start), told = device.state + device.upload + device.draw + device.finish;
    const auto each = [&bench](const char* name, double sum) {
        bench.counters[name] = sum / static_cast<double>(bench.iterations());
    };
    each("state", 1000 * device.state);
    each("upload", 1000 * device.upload);
    each("draw", 1000 * device.draw);
    each("finish", 1000 * device.finish);
    each("culling", 1000 * (whole - told));
    each("draws", device.draws);
    each("uploads", device.uploads);
    TheLevel().SetMaterial(0);
}
BENCHMARK(FourViewsByOpenGl)->Arg(0)->Arg(1)->Arg(1000)->Unit(benchmark::kMillisecond)->UseRealTime();

#endif
