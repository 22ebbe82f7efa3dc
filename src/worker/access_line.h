#pragma once

#include <QString>
#include <QStringView>

namespace quorin {

struct WorkerContext;

// The access line of a request that was served with `status`:
//
//     GET fwfiles/a.zip - -  200 0
//
// method, target without its first character, " - - ", the remote address (always empty), status,
// and the milliseconds the request took (always 0).
[[nodiscard]] QString accessLine(const WorkerContext& worker, QStringView status);

} // namespace quorin
