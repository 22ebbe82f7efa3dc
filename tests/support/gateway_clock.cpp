#include "support/gateway_clock.h"

#include "support/system.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

const QString kFakeTime = QStringLiteral(QUORIN_FAKETIME); // the library

} // namespace

GatewayClock::GatewayClock(const Site& site) : file_(site.temporaryPath() + u"/clock"_s) {
    set(std::chrono::seconds::zero());
}

QString GatewayClock::obstacle() {
    if (!kOnWindows && !QFile::exists(kFakeTime)) {
        return u"libfaketime is not installed"_s;
    }
    if (QUORIN_IS_SANITIZED) {
        return u"libfaketime and the sanitizers both have to be loaded first"_s;
    }
    return {};
}

void GatewayClock::attachTo(Gateway& gateway, ClockEffect effect) const {
    if (kOnWindows) {
        gateway.setEnvironment(u"QUORIN_TEST_CLOCK"_s, file_); // read by the test host
        return;
    }
    gateway.setEnvironment(u"LD_PRELOAD"_s, kFakeTime);
    gateway.setEnvironment(u"FAKETIME_TIMESTAMP_FILE"_s, file_);
    gateway.setEnvironment(u"FAKETIME_NO_CACHE"_s, u"1"_s);
    gateway.setEnvironment(u"FAKETIME_DONT_FAKE_MONOTONIC"_s,
                           effect == ClockEffect::TimeOfDay ? u"1"_s : u"0"_s);
}

void GatewayClock::set(std::chrono::seconds offset) const {
    QFile file(file_);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const auto seconds = qlonglong{offset.count()};
    file.write((seconds < 0 ? "" : "+") + QByteArray::number(seconds));
}

} // namespace quorin::test
