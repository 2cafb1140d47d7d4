#pragma once

#include "discovery/UdpScanner.h"

#include <QStringList>

namespace ferrylane {

/// Keeps the stored addresses of the paired phones current by the replies of each scan. A phone's
/// address changes only when exactly one host of the network has its name, in any case of letters:
/// anybody can claim a name. For one thread, which reads and may write the file of paired phones.
class PairedAddresses {
public:
    /// Nothing follows from a scan that is not complete: a name may be another's, too. A phone
    /// whose name several hosts claim keeps its address, which the log tells once until a scan
    /// finds it claimed otherwise.
    void refresh(const Scan& scan);

private:
    void tellContested(const QString& name, const QString& address);

    QStringList contested_; ///< the paired names of which the log has told
};

} // namespace ferrylane
