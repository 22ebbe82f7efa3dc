#include "support/external_program.h"

#include "support/deadline.h"

#include <QProcess>

#include <gtest/gtest.h>

namespace quorin::test {

QByteArray runChildProgram(const QString& name, const QStringList& arguments,
                           const QByteArray& input) {
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(name, arguments);
    EXPECT_TRUE(process.waitForStarted()) << name.toStdString();
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(kTestTimeoutMs)) << name.toStdString();
    return process.readAll();
}

} // namespace quorin::test
