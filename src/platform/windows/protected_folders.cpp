#include "platform/protected_folders.h"

#include "platform/windows/protected_folders_functions.h"
#include "platform/windows/security_descriptor.h"

#include <sddl.h>

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <memory>
#include <string>

using namespace Qt::StringLiterals;

namespace quorin::platform {

namespace {

constexpr SE_OBJECT_TYPE kFile = SE_FILE_OBJECT;

// The rights to change a file, a folder, its content or its rights.
constexpr DWORD kWriteRights = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | DELETE |
                               WRITE_DAC | WRITE_OWNER | GENERIC_WRITE | GENERIC_ALL;

constexpr DWORD kReadAccess = FILE_GENERIC_READ | FILE_GENERIC_EXECUTE;
constexpr DWORD kModifyAccess = kReadAccess | FILE_GENERIC_WRITE | DELETE;

constexpr QStringView kSystem = u"S-1-5-18";
constexpr QStringView kAdministrators = u"S-1-5-32-544";
constexpr QStringView kUsers = u"S-1-5-32-545";
constexpr QStringView kServicePrefix = u"S-1-5-80-";

// Besides these and the services: the accounts under which services run, and the placeholders for
// the creator and the owner of a file, which is examined itself.
constexpr std::array<QStringView, 6> kTrusted{kSystem,     kAdministrators, u"S-1-5-19",
                                              u"S-1-5-20", u"S-1-3-0",      u"S-1-3-4"};

struct LocalFreeDeleter {
    void operator()(void* memory) const noexcept { LocalFree(memory); }
};
template<typename Type>
using LocalMemory = std::unique_ptr<Type, LocalFreeDeleter>;

QString errorText(DWORD code) {
    return qt_error_string(static_cast<int>(code));
}

QString textOf(PSID identifier) {
    wchar_t* text = nullptr;
    if (ConvertSidToStringSidW(identifier, &text) == FALSE) {
        return {};
    }
    const LocalMemory<wchar_t> owned(text);
    return QString::fromWCharArray(text);
}

LocalMemory<void> identifierOf(const QString& text) {
    PSID identifier = nullptr;
    ConvertStringSidToSidW(wide(text), &identifier);
    return LocalMemory<void>(identifier);
}

bool isUnsafe(const UnsafePath& path) {
    return !path.writers.isEmpty() || !path.error.isEmpty();
}

// `alsoTrusted` is a further identifier; may be empty.
bool isTrusted(PSID identifier, const QString& alsoTrusted) {
    const QString text = textOf(identifier);
    return text.startsWith(kServicePrefix) || text == alsoTrusted ||
           std::find(kTrusted.begin(), kTrusted.end(), text) != kTrusted.end();
}

// Returns the name of the account, or its security identifier if the name cannot be looked up.
QString accountName(const ProtectedFoldersFunctions& system, PSID identifier) {
    std::array<wchar_t, 256> name{};
    std::array<wchar_t, 256> domain{};
    auto nameSize = static_cast<DWORD>(name.size());
    auto domainSize = static_cast<DWORD>(domain.size());
    SID_NAME_USE use{};
    if (system.lookUpAccount(nullptr, identifier, name.data(), &nameSize, domain.data(),
                             &domainSize, &use) == FALSE) {
        return textOf(identifier);
    }
    const QString account = QString::fromWCharArray(name.data());
    return domainSize == 0 ? account : QString::fromWCharArray(domain.data()) + u'\\' + account;
}

// Returns the account to which `entry` allows access, and the rights.
struct Allowed {
    PSID account = nullptr;
    DWORD rights = 0;
};
Allowed allowedBy(void* entry) {
    const auto type = static_cast<ACE_HEADER*>(entry)->AceType;
    if (type != ACCESS_ALLOWED_ACE_TYPE && type != ACCESS_ALLOWED_CALLBACK_ACE_TYPE) {
        return {};
    }
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry); // same layout for both types
    return {&allowed->SidStart, allowed->Mask};
}

UnsafePath examine(const ProtectedFoldersFunctions& system, const QString& path,
                   const QString& alsoTrusted = {}) {
    UnsafePath result{path, {}, {}};
    PSID owner = nullptr;
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = system.getSecurity(wide(path), kFile,
                                           OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                           &owner, nullptr, &list, nullptr, &descriptor);
    if (error != ERROR_SUCCESS) {
        result.error = errorText(error);
        return result;
    }
    const LocalMemory<void> owned(descriptor);
    const auto add = [&](const QString& account) {
        if (!result.writers.contains(account)) {
            result.writers.append(account);
        }
    };
    if (owner != nullptr && !isTrusted(owner, alsoTrusted)) {
        add(accountName(system, owner) + u" (owner)");
    }
    if (list == nullptr) {
        add(u"every account (there is no access list)"_s);
        return result;
    }
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (GetAce(list, i, &entry) == FALSE) {
            continue;
        }
        const Allowed allowed = allowedBy(entry);
        if ((allowed.rights & kWriteRights) != 0 && !isTrusted(allowed.account, alsoTrusted)) {
            add(accountName(system, allowed.account));
        }
    }
    return result;
}

void examineTree(const ProtectedFoldersFunctions& system, const QFileInfo& root, int limit,
                 std::vector<UnsafePath>& found) {
    if (static_cast<int>(found.size()) >= limit) {
        return;
    }
    UnsafePath result = examine(system, QDir::toNativeSeparators(root.absoluteFilePath()));
    if (isUnsafe(result)) {
        found.push_back(std::move(result));
    }
    if (!root.isDir() || root.isSymLink() || root.isJunction()) {
        return;
    }
    const QDir folder(root.absoluteFilePath());
    const QDir::Filters all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    for (const QFileInfo& entry : folder.entryInfoList(all, QDir::Name)) {
        examineTree(system, entry, limit, found);
    }
}

// The security descriptor of a new folder, in the security descriptor definition language.
QString descriptorText(const ProtectedFolder& folder, const QString& service) {
    const auto grant = [](DWORD rights, QStringView account) -> QString {
        return u"(A;OICI;0x" + QString::number(rights, 16) + u";;;" + account + u')';
    };
    const DWORD rights = folder.serviceAccess == FolderAccess::Modify ? kModifyAccess : kReadAccess;
    return u"O:" + kAdministrators + u"D:P" + grant(FILE_ALL_ACCESS, kSystem) +
           grant(FILE_ALL_ACCESS, kAdministrators) + grant(kReadAccess, kUsers) +
           grant(rights, service);
}

DWORD createFolder(const ProtectedFoldersFunctions& system, const ProtectedFolder& folder,
                   const QString& service) {
    SecurityAttributes attributes(descriptorText(folder, service));
    if (attributes.get() == nullptr) {
        return GetLastError();
    }
    // The folder never exists with other rights.
    return system.createFolder(wide(folder.path), attributes.get()) != FALSE ? DWORD{ERROR_SUCCESS}
                                                                             : GetLastError();
}

DWORD grantAccess(const ProtectedFoldersFunctions& system, const ProtectedFolder& folder,
                  const QString& service) {
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    DWORD error = system.getSecurity(wide(folder.path), kFile, DACL_SECURITY_INFORMATION, nullptr,
                                     nullptr, &list, nullptr, &descriptor);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    const LocalMemory<void> ownedDescriptor(descriptor);
    const LocalMemory<void> account = identifierOf(service);
    EXPLICIT_ACCESSW entry{};
    entry.grfAccessPermissions =
        folder.serviceAccess == FolderAccess::Modify ? kModifyAccess : kReadAccess;
    entry.grfAccessMode = GRANT_ACCESS;
    entry.grfInheritance = SUB_CONTAINERS_AND_OBJECTS_INHERIT;
    entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    entry.Trustee.TrusteeType = TRUSTEE_IS_USER;
    entry.Trustee.ptstrName = static_cast<wchar_t*>(account.get());
    ACL* extended = nullptr;
    error = system.addEntries(1, &entry, list, &extended);
    if (error != ERROR_SUCCESS) {
        return error;
    }
    const LocalMemory<ACL> ownedList(extended);
    std::wstring path = folder.path.toStdWString();
    return system.setSecurity(path.data(), kFile, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                              extended, nullptr);
}

} // namespace

QStringList unprivilegedWritersWith(const ProtectedFoldersFunctions& system, const QString& path,
                                    const QString& ownAccount) {
    return examine(system, QDir::toNativeSeparators(path), ownAccount).writers;
}

std::vector<UnsafePath> findUnsafePathsWith(const ProtectedFoldersFunctions& system,
                                            const QString& root, int limit) {
    std::vector<UnsafePath> found;
    const QFileInfo info(root);
    if (info.exists() || info.isSymLink()) {
        examineTree(system, info, limit, found);
    }
    return found;
}

std::optional<QString> createProtectedFoldersWith(const ProtectedFoldersFunctions& system,
                                                  const std::vector<ProtectedFolder>& folders,
                                                  const QString& serviceName) {
    const QString service = serviceIdentifier(serviceName);
    for (const ProtectedFolder& folder : folders) {
        DWORD error = createFolder(system, folder, service);
        if (error == ERROR_ALREADY_EXISTS) {
            if (isUnsafe(examine(system, folder.path))) {
                return folder.path + u": other accounts can change this folder";
            }
            error = grantAccess(system, folder, service);
        }
        if (error != ERROR_SUCCESS) {
            return folder.path + u": " + errorText(error);
        }
    }
    return std::nullopt;
}

// S-1-5-80 and the five little-endian words of the SHA-1 digest of the upper-case name in UTF-16.
QString serviceIdentifier(const QString& name) {
    const QString upper = name.toUpper();
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(QByteArrayView(reinterpret_cast<const char*>(upper.utf16()),
                                upper.size() * qsizetype{sizeof(char16_t)}));
    const QByteArray digest = hash.result();
    QStringList words;
    for (qsizetype i = 0; i < digest.size(); i += qsizetype{sizeof(quint32)}) {
        words += QString::number(qFromLittleEndian<quint32>(digest.constData() + i));
    }
    return kServicePrefix + words.join(u'-');
}

QStringList unprivilegedWriters(const QString& path) {
    return unprivilegedWritersWith({}, path, ownAccount());
}

std::vector<UnsafePath> findUnsafePaths(const QString& root, int limit) {
    return findUnsafePathsWith({}, root, limit);
}

std::optional<QString> createProtectedFolders(const std::vector<ProtectedFolder>& folders,
                                              const QString& serviceName) {
    return createProtectedFoldersWith({}, folders, serviceName);
}

QStringList repairCommands(const QString& root) {
    const auto grant = [](QStringView account, QStringView rights) -> QString {
        return u" \"*" + account + u":(OI)(CI)" + rights + u'"';
    };
    const QString icacls = u"icacls \""_s + root + u'"';
    return {icacls + u" /setowner \"*" + kAdministrators + u"\" /T /C /Q",
            icacls + u" /reset /T /C /Q",
            icacls + u" /inheritance:r /grant:r" + grant(kSystem, u"F") +
                grant(kAdministrators, u"F") + grant(kUsers, u"RX")};
}

} // namespace quorin::platform
