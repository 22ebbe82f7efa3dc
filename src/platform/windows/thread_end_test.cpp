#include <QRegularExpression>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

// A thread that ends must not corrupt memory, whichever compiler Qt was built with.
TEST(ThreadEndTest, ThreadsThatMatchPatternsEndCleanly) {
    static const QRegularExpression pattern(u"(a*)b"_s);
    for (int round = 0; round < 50; ++round) {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) {
            threads.emplace_back([] {
                for (int match = 0; match < 10; ++match) {
                    EXPECT_EQ(pattern.match(u"caab"_s).captured(1), u"aa"_s);
                }
            });
        }
    }
}

} // namespace
} // namespace quorin::platform
