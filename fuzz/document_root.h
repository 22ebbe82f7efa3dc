#pragma once

#include "require.h"
#include "scratch_folder.h"

#include <QByteArrayView>
#include <QStringList>

// A document root with a file in each kind of folder, and secret files around it.
class DocumentRoot {
public:
    static constexpr const char* kSecret = "outside the document root";
    static constexpr const char* kPublic = "inside the document root";
    static constexpr const char* kNotification =
        R"({"RemoteSetting":{"IsExist":true,"LastUpdated":"2024-05-15T00:00:00Z"}})";
    static constexpr const char* kEmptied = "{}";

    DocumentRoot() {
        for (const char* const name : {"root/update.json", "root/update_.json", "root/fwfiles/a",
                                       "root/fwfiles/b c", "root/fwfiles/a.zip", "root/fwfiles/..a",
                                       "root/patterns/deep/p", "root/api/x", "root/%2e%2e/a"}) {
            folder_.write(QString::fromLatin1(name), QByteArrayView(kPublic));
        }
        for (const QString& name : secrets_) {
            folder_.write(name, QByteArrayView(kSecret));
        }
        require(QDir().mkpath(
                    folder_.path(QStringLiteral("Vemo/Quorin5/QuorinGatewayApp/NotificationTmp"))),
                "the staging folder can be created");
    }

    [[nodiscard]] QString path() const { return folder_.path(QStringLiteral("root")); }

    // Call before each request.
    void writeNotification() const { folder_.write(notification_, QByteArrayView(kNotification)); }

    // Checks that only the notification has changed, and only in the way of a reset.
    void check() const {
        for (const QString& name : secrets_) {
            require(folder_.read(name) == kSecret, "a file outside the root is unchanged");
        }
        const QByteArray notification = folder_.read(notification_);
        require(notification == kNotification || notification == kEmptied,
                "a notification is unchanged or reset");
        require(folder_.read(QStringLiteral("root/fwfiles/a")) == kPublic,
                "a file in the root is unchanged");
    }

private:
    ScratchFolder folder_;
    QStringList secrets_{QStringLiteral("secret"),
                         QStringLiteral("a"),
                         QStringLiteral("update.json"),
                         QStringLiteral("roota"),
                         QStringLiteral("root.json"),
                         QStringLiteral("fwfiles/a"),
                         QStringLiteral("notifications/n.json")};
    QString notification_ = QStringLiteral("root/notifications/n.json");
};
