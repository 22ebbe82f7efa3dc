#include "support/ipc_cleanup.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

// Qt derives the System V key from a file in the temporary folder and from this number.
constexpr int kQtProjectId = 'Q';

void removeSegment(key_t key) {
    const int segment = shmget(key, 0, 0);
    shmid_ds status{};
    if (segment != -1 && shmctl(segment, IPC_STAT, &status) == 0 && status.shm_nattch == 0) {
        EXPECT_EQ(shmctl(segment, IPC_RMID, nullptr), 0);
    }
}

void removeSemaphore(key_t key) {
    const int semaphore = semget(key, 0, 0);
    if (semaphore != -1) {
        EXPECT_EQ(semctl(semaphore, 0, IPC_RMID), 0);
    }
}

template<typename Remove>
void removeEach(const QDir& folder, const QString& keyFiles, Remove remove) {
    for (const QString& name : folder.entryList({keyFiles}, QDir::Files)) {
        const key_t key = ftok(QFile::encodeName(folder.filePath(name)).constData(), kQtProjectId);
        if (key != -1) {
            remove(key);
        }
    }
}

} // namespace

void removeIpcObjects(const QString& folder) {
    removeEach(QDir(folder), u"qipc_sharedmemory_*"_s, removeSegment);
    removeEach(QDir(folder), u"qipc_systemsem_*"_s, removeSemaphore);
}

} // namespace quorin::test
