#pragma once

#include <QException>
#include <QString>

// The one exception of the gateway: a finished text for the log, and what its catcher makes of
// it. Thrown by value, caught by reference.
class GatewayException : public QException {
public:
    // What went wrong, and so who settles it.
    enum Kind : int {
        Fatal = 0,             // start-up or configuration; ends the process with 1
        DuplicateInstance = 1, // another gateway runs; ends the process with 2
        Request = 2,           // one request; the worker settles it, the gateway lives
    };

    // `message` is the complete text to log. A silent exception is settled without its text being
    // logged.
    GatewayException(int kind, QString message, bool silent);
    ~GatewayException() override;

    GatewayException(const GatewayException&) = default;
    GatewayException& operator=(const GatewayException&) = default;

    [[nodiscard]] int kind() const noexcept { return kind_; }
    [[nodiscard]] QString message() const { return message_; }
    [[nodiscard]] bool isSilent() const noexcept { return silent_; }

    // Throws a copy.
    void raise() const override;
    // A copy on the heap, owned by the caller.
    [[nodiscard]] GatewayException* clone() const override;

private:
    int kind_;
    QString message_;
    bool silent_;
};

namespace quorin {

// In front of every message that ends a run or refuses work.
inline constexpr QStringView kEndPrefix = u"[End] ";

// `text` with kEndPrefix in front.
[[nodiscard]] QString endMessage(const QString& text);

} // namespace quorin
