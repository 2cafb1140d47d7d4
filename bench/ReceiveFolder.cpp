#include "bench/ReceiveFolder.h"

#include <QDirIterator>
#include <QFile>

#include <stdexcept>

#include <linux/magic.h>
#include <sys/vfs.h>

namespace bench {

ReceiveFolder ReceiveFolder::inMemory()
{
    const char* const path = "/dev/shm";
    struct statfs status {};
    if (statfs(path, &status) != 0 || status.f_type != TMPFS_MAGIC) {
        throw std::runtime_error("/dev/shm is no file system in memory");
    }
    return ReceiveFolder(QFile::decodeName(path));
}

ReceiveFolder ReceiveFolder::below(const QString& parent)
{
    return ReceiveFolder(parent);
}

ReceiveFolder::ReceiveFolder(const QString& parent)
    : dir_(parent + QStringLiteral("/ferrylane-bench-"))
{
    if (!dir_.isValid()) {
        throw std::runtime_error("cannot create a folder in " + parent.toStdString());
    }
}

void ReceiveFolder::clear(int count, qint64 size) const
{
    int found = 0;
    bool sizesMatch = true;
    QDirIterator each(path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (each.hasNext()) {
        QFile file(each.next());
        sizesMatch = sizesMatch && file.size() == size;
        ++found;
        if (!file.remove()) throw std::runtime_error("cannot delete a received file");
    }
    if (found != count || !sizesMatch) {
        throw std::runtime_error("the files received are not those that were sent");
    }
}

} // namespace bench
