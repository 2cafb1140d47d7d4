#pragma once

#include <QString>

namespace bench {

/// Writes files to be sent. Throws std::runtime_error when there is no room for them.
void writeSourceFile(const QString& path, qint64 size);
/// `count` files of `size` bytes in `folder`, which is made.
void writeSourceFiles(const QString& folder, int count, qint64 size);

} // namespace bench
