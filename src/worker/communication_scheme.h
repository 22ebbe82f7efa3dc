#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>

namespace quorin {

// How clients of the facility reach the cloud's Web API.
enum class CommunicationScheme : std::uint32_t { None = 0, Http = 1, Https = 2 };

// "http", "https", or an empty text for none.
[[nodiscard]] QStringView schemeText(CommunicationScheme scheme);

// The scheme that follows from the cloud's root URL, from the text before its first ":" in any
// letter case: plain HTTP stays that; HTTPS becomes plain HTTP where the facility allows it;
// anything else is none.
[[nodiscard]] CommunicationScheme communicationSchemeOf(const QString& rootUrl,
                                                        bool isHttpEnabledInFacility);

} // namespace quorin
