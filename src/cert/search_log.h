#pragma once

#include <QDateTime>

// Test support for searches for the certificate of "gateway.example".
namespace quorin::test {

// The time of the searches.
inline const QDateTime kNow(QDate(2024, 2, 29), QTime(12, 0), Qt::UTC);

// Lines that a search logs.
inline constexpr const char* kSearch =
    "info: Try to search server certificate that have this name as "
    "subject alternative names or common name. [gateway.example]";
inline constexpr const char* kDetected = "info: Detect certificate for HTTPS server";
inline constexpr const char* kNotFound = "error: Failed to find valid certificate.";

} // namespace quorin::test
