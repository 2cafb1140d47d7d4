#pragma once

#include "platform/DatagramSocket.h"
#include "protocol/DiscoveryProtocol.h"

#include <QString>
#include <QStringList>

#include <map>

namespace ferrylane {

/// Keeps the stored addresses of the paired phones current by the replies of each scan. A phone's
/// address changes only when exactly one host of the network has its name, in any case of letters:
/// anybody can claim a name. For one thread, which reads and may write the file of paired phones.
class PairedAddresses {
public:
    /// A reply of the scan that is under way. Every name claimed is kept until it ends.
    void claim(const DiscoveryReply& reply, const platform::Endpoint& source);
    /// The scan has come to its end. A phone whose name several hosts claim keeps its address,
    /// which the log tells once until a scan finds it claimed otherwise.
    void refresh();
    /// The scan was not complete: a name may be another's, too.
    void forgetClaims() { claims_.clear(); }

private:
    struct Claim {
        std::uint32_t host = 0;
        QString baseURL; ///< empty when the host has told no port that can be reached
        bool isContested = false;
    };
    struct AnyCase {
        bool operator()(const QString& left, const QString& right) const
        {
            return left.compare(right, Qt::CaseInsensitive) < 0;
        }
    };

    void tellContested(const QString& name, const QString& address);

    std::map<QString, Claim, AnyCase> claims_;
    QStringList contested_; ///< the paired names of which the log has told
};

} // namespace ferrylane
