#include <QByteArray>

#include <gtest/gtest.h>

#include <limits>
#include <new>

namespace {

// Qt and this program each contain a copy of the compiler's runtime.
TEST(ExceptionTest, QtExceptionKeepsItsType) {
    constexpr auto tooMany = std::numeric_limits<qsizetype>::max() / 2;
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(QByteArray(tooMany, 'x'), std::bad_alloc);
    }
}

} // namespace
