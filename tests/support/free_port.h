#pragma once

#include <QByteArray>
#include <QUdpSocket>

#include <memory>

namespace quorin::test {

// A TCP port that is not in use. No other test is given it during the lifetime of the object, so
// that the tests of different processes, which run at the same time, do not use the same port.
class FreePort {
public:
    FreePort();

    [[nodiscard]] quint16 number() const noexcept { return number_; }
    [[nodiscard]] QByteArray text() const { return QByteArray::number(number_); }

private:
    // The claim: bound to the UDP port with the same number. The system releases it if the process
    // ends.
    std::unique_ptr<QUdpSocket> claim_;
    quint16 number_ = 0;
};

} // namespace quorin::test
