#include "handlers/routing.h"

#include "handlers/api_query.h"
#include "handlers/delete_request.h"
#include "handlers/download.h"
#include "handlers/file_names.h"
#include "handlers/path_limit.h"
#include "handlers/refusal.h"
#include "handlers/request_context.h"
#include "handlers/update_manifest.h"
#include "http/method.h"
#include "http/request.h"
#include "log/log.h"
#include "platform/file_alias.h"

#include <QDir>
#include <QFileInfo>

namespace quorin {

namespace {

constexpr QChar kSlash = u'/';

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

[[noreturn]] void refuseMissing(RequestContext& context, const QString& path) {
    const QStringView fileName = QStringView(path).mid(path.lastIndexOf(kSlash) + 1);
    refuse(context, http::Status::NotFound, path + u" does not exist or directory",
           fileName == kUpgradeSetting ? FailureLog::Suppress : FailureLog::Write);
}

// Returns true if the file, which routing found at `path`, is stored under another name. Such a
// name would bypass the lock of notifications and the limit of large files, which depend on names.
bool isAlias(const RequestContext& context, const QString& path, const QFileInfo& fileInfo) {
    // The file of an update manifest is another one in the same folder.
    const QString found = path.left(path.lastIndexOf(kSlash) + 1) + fileInfo.fileName();
    return platform::isFileAlias(context.documentRoot, found.mid(context.documentRoot.size()));
}

void download(RequestContext& context, const QFileInfo& fileInfo) {
    log::debug([&fileInfo]() -> QString { return u"Target file : " + fileInfo.fileName(); });
    if (folderName(fileInfo) == kNotificationsFolder) {
        sendNotificationFile(context, fileInfo);
    } else {
        sendFile(context, fileInfo);
    }
}

// Serves a target that names a file. Sends status 400 if the path contains "/../" or "/./", and
// 404 if it names no file, is an alias of one, or is longer than kMaxPathLength.
void serveFileTarget(RequestContext& context, const http::Request& request) {
    const QString target = textOfTarget(request);
    const QString path = pathBelowRoot(context.documentRoot, target);
    if (leavesItsFolder(path)) {
        refuse(context, http::Status::BadRequest,
               context.requestUrl.toString() + u" is invalid url");
    }
    if (path.size() > kMaxPathLength) {
        refuseMissing(context, path);
    }
    QFileInfo fileInfo(path);
    if (fileInfo.fileName() == kUpdateManifest) {
        selectUpdateManifest(context, fileInfo);
    }
    // A target without a leading slash would name a file next to the document root.
    const bool isFile = target.startsWith(kSlash) && fileInfo.exists() && !fileInfo.isDir() &&
                        !isAlias(context, path, fileInfo);
    if (!isFile) {
        refuseMissing(context, path);
    }
    if (request.line.method == http::Method::Get) {
        download(context, fileInfo);
    } else {
        deleteRequest(context, fileInfo, request.headers);
    }
}

} // namespace

QString pathBelowRoot(const QString& documentRoot, const QString& target) {
    return documentRoot + QString::fromLatin1(QUrl::toPercentEncoding(target, "/"));
}

void route(RequestContext& context, const http::Request& request) {
    const QString target = textOfTarget(request);
    const http::Method method = request.line.method;
    const std::string_view methodName = http::methodName(method);
    context.requestUrl = QUrl(target);
    context.methodText =
        QString::fromLatin1(methodName.data(), static_cast<qsizetype>(methodName.size()));
    if (method != http::Method::Get && method != http::Method::Delete) {
        refuse(context, http::Status::MethodNotAllowed,
               u"unsupported http method was requested: " + context.methodText);
    }
    if (isApiQuery(target)) {
        serveApi(context, target);
    } else {
        serveFileTarget(context, request);
    }
}

} // namespace quorin
