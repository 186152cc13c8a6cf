#include <QApplication>
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>

#include "desktop/QtAlertPanel.h"
#include "desktop/QtRunLoop.h"
#include "platform/threads/MainThread.h"
#include "platform/threads/Thread.h"

// Windows are drawn where no display is needed, unless the toolkit is told another place.
int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    testing::InitGoogleTest(&argc, argv);
    QApplication toolkit(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    vornic::platform::MainThread::adopt();
    vornic::platform::MainThread::setLoop(std::make_shared<vornic::QtRunLoop>());
    vornic::QMAlert::setPanelFactory(std::make_shared<vornic::QtAlertPanelFactory>());
    const int result = RUN_ALL_TESTS();
    vornic::platform::MainThread::shutdown();
    vornic::platform::joinDetachedThreads(std::chrono::seconds(20));
    vornic::platform::MainThread::setLoop(nullptr);
    return result;
}
