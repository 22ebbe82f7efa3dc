#include "handlers/update_manifest.h"

#include "handlers/handler_fixture.h"
#include "support/system.h"

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class UpdateManifestTest : public HandlerTest {
protected:
    // Returns the path selected for a request for "update.json" in `folder`.
    QString selected(const QString& folder) {
        QFileInfo fileInfo(data_.path(folder + u"/update.json"));
        selectUpdateManifest(context_, fileInfo);
        return fileInfo.filePath();
    }
};

TEST_F(UpdateManifestTest, SelectsVariantOfLocalAddress) {
    data_.write(u"root/update.json"_s, {});
    const QString first = data_.write(u"root/update_127.0.0.1.json"_s, {});
    const QString second = data_.write(u"root/update_127.0.0.2.json"_s, {});
    EXPECT_EQ(selected(u"root"_s), first);
    connectTo(QHostAddress(u"127.0.0.2"_s));
    EXPECT_EQ(selected(u"root"_s), second);
    EXPECT_EQ(log_.lines(), (QStringList{
                                u"2 Received requesting update.json from "_s,
                                u"2 Response update.json : update_127.0.0.1.json"_s,
                                u"2 Received requesting update.json from "_s,
                                u"2 Response update.json : update_127.0.0.2.json"_s,
                            }));
}

TEST_F(UpdateManifestTest, IgnoresVariantOfAnotherAddress) {
    const QString general = data_.write(u"root/update.json"_s, {});
    for (const QString& name : {u"update_127.0.0.2.json"_s, u"update_127.0.0.json"_s,
                                u"update_.json"_s, u"update_127.0.0.1"_s}) {
        data_.write(u"root/"_s + name, {});
    }
    if (!kOnWindows) { // file names there ignore letter case
        data_.write(u"root/Update_127.0.0.1.json"_s, {});
        data_.write(u"root/update_127.0.0.1.JSON"_s, {});
    }
    EXPECT_EQ(selected(u"root"_s), general);
    EXPECT_EQ(log_.lines().last(), u"2 Response update.json : update.json"_s);
}

TEST_F(UpdateManifestTest, DoesNotRequireRequestedFile) {
    EXPECT_EQ(selected(u"root"_s), data_.path(u"root/update.json"_s));
    const QString variant = data_.write(u"root/deep/update_127.0.0.1.json"_s, {});
    EXPECT_EQ(selected(u"root/deep"_s), variant);
}

TEST_F(UpdateManifestTest, IgnoresSpecialCharactersInFolderName) {
    const QString variant = data_.write(u"root/a.b_%1%3/update_127.0.0.1.json"_s, {});
    EXPECT_EQ(selected(u"root/a.b_%1%3"_s), variant);
}

TEST_F(UpdateManifestTest, LogsRemoteAddress) {
    context_.remoteAddressText = u"10.0.0.1"_s;
    static_cast<void>(selected(u"root"_s));
    EXPECT_EQ(log_.lines().first(), u"2 Received requesting update.json from 10.0.0.1"_s);
}

} // namespace
} // namespace quorin::test
