#pragma once

#include <QException>
#include <QString>

namespace quorin {

// The only exception class of the gateway: a complete text for the log and the kind of failure.
// Throw by value, catch by reference.
class GatewayException : public QException {
public:
    // The kind of failure; it decides who handles it.
    enum Kind : int {
        Fatal = 0,             // start-up or configuration; the process exits with 1
        DuplicateInstance = 1, // another gateway runs; the process exits with 2
        Request = 2,           // one request; handled by its worker
    };

    // `message` is the complete text to log. The text of a silent exception is not logged.
    GatewayException(int kind, QString message, bool silent);
    ~GatewayException() override;

    GatewayException(const GatewayException&) = default;
    GatewayException& operator=(const GatewayException&) = default;

    [[nodiscard]] int kind() const noexcept { return kind_; }
    [[nodiscard]] QString message() const { return message_; }
    [[nodiscard]] bool isSilent() const noexcept { return silent_; }

    // Throws a copy.
    void raise() const override;
    // Returns a copy on the heap, owned by the caller.
    [[nodiscard]] GatewayException* clone() const override;

private:
    int kind_;
    QString message_;
    bool silent_;
};

// Begins every message of a failure that ends the process or refuses a request.
inline constexpr QStringView kEndPrefix = u"[End] ";

// Returns kEndPrefix followed by `text`.
[[nodiscard]] QString endMessage(const QString& text);

} // namespace quorin
