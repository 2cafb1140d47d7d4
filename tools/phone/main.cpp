#include "phone/Arguments.h"
#include "phone/Commands.h"
#include "phone/Failure.h"
#include "phone/Output.h"

#include <QCoreApplication>

namespace phone = ferrylane::phone;

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    try {
        phone::run(phone::parseArguments(QByteArrayList(argv, argv + argc)));
    } catch (const phone::Failure& failure) {
        phone::tell(QStringLiteral("ferrylane-phone: ") + QString::fromUtf8(failure.what()));
        return static_cast<int>(failure.code());
    }
    return static_cast<int>(phone::ExitCode::ok);
}
