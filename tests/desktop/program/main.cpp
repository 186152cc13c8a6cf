#include <QCoreApplication>

#include <gtest/gtest.h>

// The tests ask over the message bus, which wants an application object.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication toolkit(argc, argv);
    return RUN_ALL_TESTS();
}
