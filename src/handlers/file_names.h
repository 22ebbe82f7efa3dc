#pragma once

#include <QStringView>

// Names of files and folders that the gateway treats specially.
namespace quorin {

inline constexpr QStringView kApiFolder = u"api";
inline constexpr QStringView kNotificationsFolder = u"notifications";
inline constexpr QStringView kUpdateManifest = u"update.json";
inline constexpr QStringView kUpgradeSetting = u"QuorinUpgradeSetting.json";

// The staging folder of notifications, in the product folder.
inline constexpr QStringView kGatewayAppFolder = u"QuorinGatewayApp";
inline constexpr QStringView kNotificationStagingFolder = u"NotificationTmp";

} // namespace quorin
