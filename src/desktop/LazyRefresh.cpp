#include "desktop/LazyRefresh.h"

#include <QTimer>

static constexpr int PAUSE_STEP = 100; // milliseconds between two looks whether a pause is over

std::atomic<int> LazyRefresh::paused = 0;

void LazyRefresh::Request() {
    if (!requested.exchange(true))
        QMetaObject::invokeMethod(
            this, [this] { Run(); }, Qt::QueuedConnection);
}

void LazyRefresh::Run() {
    if (paused > 0) {
        QTimer::singleShot(PAUSE_STEP, this, [this] { Run(); });
        return;
    }
    requested = false;
    refresh();
}
