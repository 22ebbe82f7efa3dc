#pragma once

#include <QString>
#include <QStringView>

namespace quorin {

struct RequestContext;

// Returns the access line of a request that was answered with `status`:
//
//     GET fwfiles/a.zip - -  200 0
//
// method, target without its first character, " - - ", remote address (always empty), status,
// duration in milliseconds (always 0); see docs/compatibility.md.
[[nodiscard]] QString accessLine(const RequestContext& context, QStringView status);

} // namespace quorin
