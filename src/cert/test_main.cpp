#include <QCoreApplication>

#include <gtest/gtest.h>

// Qt's TLS classes require an application object.
int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
