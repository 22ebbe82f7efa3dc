#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>

namespace quorin {

// The scheme that clients of the facility use for the cloud's Web API.
enum class CommunicationScheme : std::uint32_t { None = 0, Http = 1, Https = 2 };

// Returns "http", "https", or an empty text for None.
[[nodiscard]] QStringView schemeText(CommunicationScheme scheme);

// Returns the scheme to use for the cloud's root URL, from the text before its first ":". ASCII
// letter case is ignored. "http" gives Http; "https" gives Http if the facility allows plain HTTP,
// else Https; any other text gives None.
[[nodiscard]] CommunicationScheme communicationSchemeOf(const QString& rootUrl,
                                                        bool isHttpEnabledInFacility);

} // namespace quorin
