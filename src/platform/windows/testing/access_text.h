#pragma once

#include "platform/windows/system.h"

#include <sddl.h>

#include <QString>

#include <gtest/gtest.h>

#include <string>

// For tests.
namespace quorin::platform {

// Returns the access list of `descriptor` in the security descriptor definition language (SDDL).
[[nodiscard]] inline std::string accessText(PSECURITY_DESCRIPTOR descriptor) {
    wchar_t* text = nullptr;
    EXPECT_NE(ConvertSecurityDescriptorToStringSecurityDescriptorW(
                  descriptor, SDDL_REVISION_1, DACL_SECURITY_INFORMATION, &text, nullptr),
              FALSE)
        << GetLastError();
    std::string result = QString::fromWCharArray(text).toStdString();
    LocalFree(text);
    return result;
}

} // namespace quorin::platform
