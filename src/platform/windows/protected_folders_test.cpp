#include "platform/protected_folders.h"

#include "platform/windows/protected_folders_functions.h"

#include <sddl.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* kSafe = "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)"
                              "(A;OICI;0x1301bf;;;S-1-5-80-1-2-3-4-5)(A;OICIIO;FA;;;CO)";

// The access rights of files, in the security descriptor definition language. The functions
// receive no user data.
struct Rights {
    std::string common = kSafe;
    std::map<QString, std::string> special; // by file name
    std::map<QString, DWORD> errors;        // by file name
    DWORD addError = ERROR_SUCCESS;
    DWORD setError = ERROR_SUCCESS;
    bool areNamesKnown = true;

    std::vector<QString> created; // file names
    std::map<QString, QString> createdWith;
    std::map<QString, QString> set; // by file name
};
Rights* rights = nullptr;

QString fileName(const wchar_t* path) {
    return QString::fromWCharArray(path).section(u'\\', -1);
}

QString textOf(PSECURITY_DESCRIPTOR descriptor) {
    wchar_t* text = nullptr;
    ConvertSecurityDescriptorToStringSecurityDescriptorW(
        descriptor, SDDL_REVISION_1, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &text,
        nullptr);
    const QString result = QString::fromWCharArray(text);
    LocalFree(text);
    return result;
}

ProtectedFoldersFunctions fakeFunctions() {
    ProtectedFoldersFunctions functions;
    functions.getSecurity = [](const wchar_t* path, SE_OBJECT_TYPE, SECURITY_INFORMATION,
                               PSID* owner, PSID*, ACL** list, ACL**,
                               PSECURITY_DESCRIPTOR* descriptor) -> DWORD {
        const QString name = fileName(path);
        if (rights->errors.count(name) != 0) {
            return rights->errors[name];
        }
        const std::string text =
            rights->special.count(name) != 0 ? rights->special[name] : rights->common;
        EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
            text.c_str(), SDDL_REVISION_1, descriptor, nullptr))
            << text;
        BOOL isPresent = FALSE;
        BOOL isDefault = FALSE;
        EXPECT_TRUE(GetSecurityDescriptorDacl(*descriptor, &isPresent, list, &isDefault));
        if (!isPresent) {
            *list = nullptr;
        }
        return owner == nullptr || GetSecurityDescriptorOwner(*descriptor, owner, &isDefault)
                   ? ERROR_SUCCESS
                   : GetLastError();
    };
    functions.addEntries = [](ULONG count, EXPLICIT_ACCESSW* entries, ACL* old,
                              ACL** result) -> DWORD {
        return rights->addError != ERROR_SUCCESS ? rights->addError
                                                 : SetEntriesInAclW(count, entries, old, result);
    };
    functions.setSecurity = [](wchar_t* path, SE_OBJECT_TYPE, SECURITY_INFORMATION information,
                               PSID, PSID, ACL* list, ACL*) -> DWORD {
        EXPECT_EQ(information, DWORD{DACL_SECURITY_INFORMATION});
        SECURITY_DESCRIPTOR descriptor;
        InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
        SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE);
        rights->set[fileName(path)] = textOf(&descriptor);
        return rights->setError;
    };
    functions.lookUpAccount = [](const wchar_t* system, PSID identifier, wchar_t* name,
                                 DWORD* nameSize, wchar_t* domain, DWORD* domainSize,
                                 SID_NAME_USE* use) -> BOOL {
        return rights->areNamesKnown
                   ? LookupAccountSidW(system, identifier, name, nameSize, domain, domainSize, use)
                   : FALSE;
    };
    functions.createFolder = [](const wchar_t* path, SECURITY_ATTRIBUTES* attributes) -> BOOL {
        if (CreateDirectoryW(path, nullptr) == FALSE) {
            return FALSE;
        }
        rights->created.push_back(fileName(path));
        rights->createdWith[fileName(path)] = textOf(attributes->lpSecurityDescriptor);
        return TRUE;
    };
    return functions;
}

class ProtectedFoldersTest : public testing::Test {
protected:
    ProtectedFoldersTest() { rights = &rights_; }
    ~ProtectedFoldersTest() override { rights = nullptr; }

    QString path(const QString& name) const {
        return QDir::toNativeSeparators(folder_.filePath(name));
    }
    void makeTree() const {
        ASSERT_TRUE(QDir().mkpath(path(u"top/wwwroot/fwfiles"_s)));
        QFile file(path(u"top/wwwroot/fwfiles/file.bin"_s));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    // One line for each path: its name and the writers.
    std::vector<std::string> unsafe(int limit = 20) const {
        std::vector<std::string> lines;
        for (const UnsafePath& found :
             findUnsafePathsWith(fakeFunctions(), path(u"top"_s), limit)) {
            const QString detail = found.error.isEmpty() ? found.writers.join(u", "_s) : u"error"_s;
            lines.push_back(found.path.section(u'\\', -1).toStdString() + ": " +
                            detail.toStdString());
        }
        return lines;
    }
    void expectUnsafe(const std::string& descriptor, const std::string& writers) {
        rights_.special[u"wwwroot"_s] = descriptor;
        EXPECT_THAT(unsafe(), ElementsAre("wwwroot: " + writers)) << descriptor;
    }
    void expectSafe(const std::string& descriptor) {
        rights_.special[u"wwwroot"_s] = descriptor;
        EXPECT_THAT(unsafe(), IsEmpty()) << descriptor;
    }

    const QTemporaryDir folder_;
    Rights rights_;
};

TEST_F(ProtectedFoldersTest, AcceptsProtectedTree) {
    makeTree();
    EXPECT_THAT(unsafe(), IsEmpty());
    expectSafe("O:SYD:P(A;;FA;;;LS)(A;;FA;;;NS)(A;;FA;;;OW)");
    expectSafe("O:S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464D:P(A;;FR;;;WD)");
    expectSafe("O:BAD:P"); // no account has access
}

TEST_F(ProtectedFoldersTest, MissingTreeIsSafe) {
    EXPECT_THAT(unsafe(), IsEmpty());
}

TEST_F(ProtectedFoldersTest, ReportsOwner) {
    makeTree();
    rights_.areNamesKnown = false;
    expectUnsafe("O:S-1-5-21-1-2-3-1001D:P(A;;FA;;;BA)", "S-1-5-21-1-2-3-1001 (owner)");
}

TEST_F(ProtectedFoldersTest, CheckTrustsOwnAccount) {
    makeTree();
    rights_.areNamesKnown = false;
    const QString own = u"S-1-5-21-1-2-3-1001"_s;
    const QString other = u"S-1-5-21-1-2-3-1002"_s;
    rights_.special[u"wwwroot"_s] =
        QString(u"O:" + own + u"D:P(A;;FA;;;" + own + u")(A;;FA;;;" + other + u')').toStdString();
    const QString folder = path(u"top/wwwroot"_s);
    EXPECT_EQ(unprivilegedWritersWith(fakeFunctions(), folder, own), QStringList(other));
    EXPECT_EQ(unprivilegedWritersWith(fakeFunctions(), folder, other),
              (QStringList{own + u" (owner)", own}));
}

// Each right to write, alone. An inherited entry of the users is what new folders in C:\ProgramData
// have.
TEST_F(ProtectedFoldersTest, ReportsEachRightToWrite) {
    makeTree();
    rights_.areNamesKnown = false;
    for (const char* right : {"0x2", "0x4", "0x40", "SD", "WD", "WO", "GW", "GA", "FA", "FW"}) {
        expectUnsafe("O:BAD:P(A;;" + std::string(right) + ";;;BU)", "S-1-5-32-545");
    }
    expectUnsafe("O:BAD:AI(A;CIID;0x116;;;BU)", "S-1-5-32-545");
    expectUnsafe("O:BAD:P(A;OICIIO;FW;;;BU)", "S-1-5-32-545");
    expectUnsafe("O:BAD:P(D;;FW;;;BU)(A;;FA;;;BU)", "S-1-5-32-545");
    expectSafe("O:BAD:P(D;;FA;;;BU)(A;;0x1201a9;;;BU)");
}

TEST_F(ProtectedFoldersTest, ReportsEachAccountOnce) {
    makeTree();
    rights_.areNamesKnown = false;
    expectUnsafe("O:BAD:P(A;;FW;;;WD)(A;OICIIO;FA;;;WD)(A;;FA;;;AU)(A;;FA;;;S-1-5-21-1-2-3-1001)",
                 "S-1-1-0, S-1-5-11, S-1-5-21-1-2-3-1001");
}

TEST_F(ProtectedFoldersTest, ReportsMissingAccessList) {
    makeTree();
    expectUnsafe("O:BA", "every account (there is no access list)");
}

TEST_F(ProtectedFoldersTest, NamesAccounts) {
    makeTree();
    expectUnsafe("O:BAD:P(A;;FA;;;WD)", "Everyone");
}

TEST_F(ProtectedFoldersTest, ReportsUnreadableRights) {
    makeTree();
    rights_.errors[u"file.bin"_s] = ERROR_ACCESS_DENIED;
    EXPECT_THAT(unsafe(), ElementsAre("file.bin: error"));
}

TEST_F(ProtectedFoldersTest, ReportsFilesUpToLimit) {
    makeTree();
    rights_.common = "O:BAD:P(A;;FA;;;WD)";
    EXPECT_THAT(unsafe(), ElementsAre("top: Everyone", "wwwroot: Everyone", "fwfiles: Everyone",
                                      "file.bin: Everyone"));
    EXPECT_THAT(unsafe(2), ElementsAre("top: Everyone", "wwwroot: Everyone"));
}

TEST_F(ProtectedFoldersTest, CreatesFoldersWithRights) {
    const std::vector<ProtectedFolder> folders{{path(u"top"_s), FolderAccess::Read},
                                               {path(u"top\\log"_s), FolderAccess::Modify}};
    EXPECT_EQ(createProtectedFoldersWith(fakeFunctions(), folders, u"TrustedInstaller"_s),
              std::nullopt);
    EXPECT_THAT(rights_.created, ElementsAre(u"top"_s, u"log"_s));
    const std::string service = "S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464";
    const std::string start =
        "O:BAD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)(A;OICI;";
    EXPECT_EQ(rights_.createdWith[u"top"_s].toStdString(), start + "0x1200a9;;;" + service + ")");
    EXPECT_EQ(rights_.createdWith[u"log"_s].toStdString(), start + "0x1301bf;;;" + service + ")");
    EXPECT_TRUE(rights_.set.empty());
}

TEST_F(ProtectedFoldersTest, CreatedFoldersAreSafe) {
    ASSERT_EQ(createProtectedFoldersWith(fakeFunctions(), {{path(u"top"_s), FolderAccess::Modify}},
                                         u"QuorinTest"_s),
              std::nullopt);
    rights_.special[u"top"_s] = rights_.createdWith[u"top"_s].toStdString();
    EXPECT_THAT(unsafe(), IsEmpty());
}

TEST_F(ProtectedFoldersTest, AddsServiceToExistingFolder) {
    makeTree();
    rights_.special[u"top"_s] = "O:BAD:P(A;OICI;FA;;;BA)(A;OICI;FR;;;S-1-5-21-1-2-3-1001)";
    EXPECT_EQ(createProtectedFoldersWith(fakeFunctions(), {{path(u"top"_s), FolderAccess::Modify}},
                                         u"QuorinTest"_s),
              std::nullopt);
    const std::string list = rights_.set[u"top"_s].toStdString();
    EXPECT_THAT(list, HasSubstr("(A;OICI;FA;;;BA)"));
    EXPECT_THAT(list, HasSubstr("(A;OICI;FR;;;S-1-5-21-1-2-3-1001)"));
    EXPECT_THAT(
        list, HasSubstr("(A;OICI;0x1301bf;;;" + serviceIdentifier(u"QuorinTest"_s).toStdString()));
}

// Another account may have created it after the tree was examined.
TEST_F(ProtectedFoldersTest, RefusesUnsafeExistingFolder) {
    makeTree();
    rights_.special[u"top"_s] = "O:S-1-5-21-1-2-3-1001D:P(A;;FA;;;BA)";
    const auto error = createProtectedFoldersWith(
        fakeFunctions(), {{path(u"top"_s), FolderAccess::Read}}, u"QuorinTest"_s);
    ASSERT_TRUE(error);
    EXPECT_THAT(error->toStdString(), HasSubstr("top: other accounts can change this folder"));
    EXPECT_TRUE(rights_.set.empty());
}

TEST_F(ProtectedFoldersTest, ReturnsErrorOfEachStep) {
    makeTree();
    const auto create = [this](const QString& name) {
        return createProtectedFoldersWith(fakeFunctions(), {{path(name), FolderAccess::Read}},
                                          u"QuorinTest"_s);
    };
    EXPECT_TRUE(create(u"missing\\child"_s));
    EXPECT_FALSE(create(u"top"_s));
    rights_.addError = ERROR_INVALID_ACL;
    EXPECT_TRUE(create(u"top"_s));
    rights_.addError = ERROR_SUCCESS;
    rights_.setError = ERROR_ACCESS_DENIED;
    EXPECT_TRUE(create(u"top"_s));
    rights_.errors[u"top"_s] = ERROR_ACCESS_DENIED;
    EXPECT_TRUE(create(u"top"_s));
}

// A published example.
TEST(ServiceIdentifierTest, IsDerivedFromName) {
    const char* expected = "S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464";
    EXPECT_EQ(serviceIdentifier(u"TrustedInstaller"_s).toStdString(), expected);
    EXPECT_EQ(serviceIdentifier(u"TRUSTEDinstaller"_s).toStdString(), expected);
}

TEST(RepairCommandsTest, NameAccountsByIdentifier) {
    const QStringList commands = repairCommands(u"C:\\Program Data\\Vemo"_s);
    ASSERT_EQ(commands.size(), 3);
    EXPECT_EQ(commands[0].toStdString(),
              "icacls \"C:\\Program Data\\Vemo\" /setowner \"*S-1-5-32-544\" /T /C /Q");
    EXPECT_EQ(commands[1].toStdString(), "icacls \"C:\\Program Data\\Vemo\" /reset /T /C /Q");
    EXPECT_EQ(commands[2].toStdString(),
              "icacls \"C:\\Program Data\\Vemo\" /inheritance:r /grant:r "
              "\"*S-1-5-18:(OI)(CI)F\" \"*S-1-5-32-544:(OI)(CI)F\" \"*S-1-5-32-545:(OI)(CI)RX\"");
}

} // namespace
} // namespace quorin::platform
