#include "log/log_capture.h"

namespace quorin {

namespace {

LogCapture* activeCapture = nullptr;

} // namespace

LogCapture::LogCapture() {
    activeCapture = this;
}

LogCapture::~LogCapture() {
    activeCapture = nullptr;
}

LogCapture* LogCapture::active() noexcept {
    return activeCapture;
}

} // namespace quorin
