#pragma once

#include <QString>

namespace bench {

/// What the process behind a SenderProcess does: it makes one FerrylaneV4Sender, reads from
/// standard input, line by line, the path of a file or of a folder of files, sends that to the
/// phone at `baseURL`, and writes a line of SendCost to standard output. Returns at the end of the
/// input. Needs the application object; throws std::runtime_error when a send fails.
void playSender(const QString& baseURL);

} // namespace bench
