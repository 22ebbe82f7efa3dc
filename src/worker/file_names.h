#pragma once

#include <QStringView>

// Names below the document root and in the staging area that change what the gateway does.
namespace quorin {

inline constexpr QStringView kApiFolder = u"api";
inline constexpr QStringView kNotificationsFolder = u"notifications";
inline constexpr QStringView kUpdateManifest = u"update.json";
inline constexpr QStringView kUpgradeSetting = u"QuorinUpgradeSetting.json";

// Where notification files are made ready, below the product's folder.
inline constexpr QStringView kGatewayAppFolder = u"QuorinGatewayApp";
inline constexpr QStringView kNotificationStagingFolder = u"NotificationTmp";

} // namespace quorin
