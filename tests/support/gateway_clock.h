#pragma once

#include "support/gateway.h"
#include "support/site.h"

#include <QByteArray>
#include <QString>

#include <chrono>

namespace quorin::test {

// What a change of the clock affects.
enum class ClockEffect { TimeOfDay, TimeOfDayAndTimers };

// The clock of a gateway process, which a test can set while the gateway runs.
class GatewayClock {
public:
    // Uses a file of `site`.
    explicit GatewayClock(const Site& site);

    // Returns why the clock of a gateway cannot be set here, or an empty text.
    [[nodiscard]] static QString obstacle();

    // Gives this clock to `gateway`, which has not been started. On Windows only the test host can
    // use it, and only for the time of day.
    void attachTo(Gateway& gateway, ClockEffect effect = ClockEffect::TimeOfDay) const;

    // Sets the clock to the machine's time plus `offset`.
    void set(std::chrono::seconds offset) const;

private:
    QString file_; // contains the offset
};

} // namespace quorin::test
