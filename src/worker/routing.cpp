#include "worker/routing.h"

#include "http/method.h"
#include "http/request.h"
#include "log/application_logger.h"
#include "worker/api_query.h"
#include "worker/delete_request.h"
#include "worker/download.h"
#include "worker/file_names.h"
#include "worker/path_limit.h"
#include "worker/reply.h"
#include "worker/request_failure.h"
#include "worker/update_manifest.h"
#include "worker/worker_context.h"

#include <QDir>
#include <QFileInfo>

namespace quorin {

namespace {

using Logger = QuorinGatewayApplicationLogger;

constexpr QChar kSlash = u'/';

[[noreturn]] void refuse(WorkerContext& worker, const char* status, const QString& text,
                         FailureLog log = FailureLog::Write) {
    replyStatus(*worker.socket, status, {});
    failRequest(text, log);
}

QString textOfTarget(const http::Request& request) {
    return QString::fromStdString(request.line.target);
}

QString folderName(const QFileInfo& fileInfo) {
    return fileInfo.absoluteDir().dirName();
}

// A target without a leading slash is not a query, even if the process runs in a folder "api".
bool isApiQuery(const QString& target) {
    if (!target.startsWith(kSlash) || target.size() > kMaxPathLength) {
        return false;
    }
    // Qt prints a warning for a path that contains NUL.
    QString path = target;
    path.replace(QChar::Null, QChar::ReplacementCharacter);
    return folderName(QFileInfo(path)).toLower() == kApiFolder;
}

bool leavesItsFolder(const QString& path) {
    return path.contains(QStringView(u"/../")) || path.contains(QStringView(u"/./"));
}

[[noreturn]] void refuseMissing(WorkerContext& worker, const QString& path) {
    const QStringView fileName = QStringView(path).mid(path.lastIndexOf(kSlash) + 1);
    refuse(worker, "404", path + u" does not exist or directory",
           fileName == kUpgradeSetting ? FailureLog::Suppress : FailureLog::Write);
}

void download(WorkerContext& worker, const QFileInfo& fileInfo) {
    Logger::logDebug([&fileInfo]() -> QString { return u"Target file : " + fileInfo.fileName(); });
    if (folderName(fileInfo) == kNotificationsFolder) {
        sendNotificationFile(worker, fileInfo);
    } else {
        sendFile(worker, fileInfo);
    }
}

} // namespace

QString pathBelowRoot(const QString& documentRoot, const QString& target) {
    return documentRoot + QString::fromLatin1(QUrl::toPercentEncoding(target, "/"));
}

void route(WorkerContext& worker, const http::Request& request) {
    const QString target = textOfTarget(request);
    const http::Method method = request.line.method;
    const std::string_view methodName = http::methodName(method);
    worker.requestUrl = QUrl(target);
    worker.methodText =
        QString::fromLatin1(methodName.data(), static_cast<qsizetype>(methodName.size()));
    if (method != http::Method::Get && method != http::Method::Delete) {
        refuse(worker, "405", u"unsupported http method was requested: " + worker.methodText);
    }
    if (isApiQuery(target)) {
        serveApi(worker, target);
    } else {
        serveFileTarget(worker, request);
    }
}

void serveFileTarget(WorkerContext& worker, const http::Request& request) {
    const QString target = textOfTarget(request);
    const QString path = pathBelowRoot(worker.documentRoot, target);
    if (leavesItsFolder(path)) {
        refuse(worker, "400", worker.requestUrl.toString() + u" is invalid url");
    }
    if (path.size() > kMaxPathLength) {
        refuseMissing(worker, path);
    }
    QFileInfo fileInfo(path);
    if (fileInfo.fileName() == kUpdateManifest) {
        selectUpdateManifest(worker, fileInfo);
    }
    // A target without a leading slash would name a file next to the document root.
    const bool isFile = target.startsWith(kSlash) && fileInfo.exists() && !fileInfo.isDir();
    if (!isFile) {
        refuseMissing(worker, path);
    }
    if (request.line.method == http::Method::Get) {
        download(worker, fileInfo);
    } else {
        deleteRequest(worker, fileInfo, request.headers);
    }
}

} // namespace quorin
