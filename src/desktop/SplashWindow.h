// The picture of the start: there for one second, or until a key or a button is pressed, which does nothing else.
#pragma once

#include <QSplashScreen>

class SplashWindow : public QSplashScreen {
    Q_OBJECT
public:
    SplashWindow();
    ~SplashWindow() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
