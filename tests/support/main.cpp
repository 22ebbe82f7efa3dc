#include "support/leak_check.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    const int result = RUN_ALL_TESTS();
    quorin::test::checkForLeaks();
    return result;
}
