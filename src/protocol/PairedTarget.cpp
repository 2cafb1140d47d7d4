#include "protocol/PairedTarget.h"

#include "core/Encodings.h"
#include "platform/SecretKey.h"

namespace ferrylane {

bool decodesToKey(QStringView keyText)
{
    const auto key = base64URLDecode(keyText);
    return key && key->size() == qsizetype{platform::SecretKey::length};
}

} // namespace ferrylane
