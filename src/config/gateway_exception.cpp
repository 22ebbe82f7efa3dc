#include "config/gateway_exception.h"

#include <utility>

namespace quorin {

GatewayException::GatewayException(int kind, QString message, bool silent)
    : kind_(kind), message_(std::move(message)), silent_(silent) {}

GatewayException::~GatewayException() = default;

void GatewayException::raise() const {
    throw *this;
}

GatewayException* GatewayException::clone() const {
    return new GatewayException(*this);
}

QString endMessage(const QString& text) {
    return kEndPrefix + text;
}

} // namespace quorin
