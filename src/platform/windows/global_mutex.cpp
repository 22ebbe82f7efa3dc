#include "platform/windows/global_mutex.h"

#include "platform/windows/security_descriptor.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::platform {

Handle createMutex(const QString& name, decltype(&CreateMutexExW) create) {
    SecurityAttributes attributes(u"D:P(A;;0x100000;;;WD)"_s); // SYNCHRONIZE for Everyone
    if (attributes.get() == nullptr) {
        return nullptr;
    }
    Handle mutex = ownHandle(create(attributes.get(), wide(name), 0, SYNCHRONIZE));
    return GetLastError() == ERROR_ALREADY_EXISTS ? nullptr : std::move(mutex);
}

} // namespace quorin::platform
