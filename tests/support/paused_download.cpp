#include "support/paused_download.h"

#include "support/messages.h"
#include "support/print.h"

#include <gtest/gtest.h>

namespace quorin::test {

std::unique_ptr<Client> startDownload(quint16 port, const QByteArray& target, qsizetype size) {
    auto client = std::make_unique<Client>(port);
    client->limitReadAhead(kMiB);
    client->send(get(target));
    const QByteArray header = streamHeader(size);
    EXPECT_EQ(client->read(header.size()), header);
    return client;
}

} // namespace quorin::test
