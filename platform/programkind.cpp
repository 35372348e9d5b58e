#include "programkind.h"

#include <QtEndian>

ProgramKind programKindOf(const QByteArray &head)
{
    if (!head.startsWith("MZ"))
        return ProgramKind::Com;
    constexpr qsizetype offsetField = 0x3C;
    if (head.size() < offsetField + 4)
        return ProgramKind::Dos;
    const quint32 offset = qFromLittleEndian<quint32>(head.constData() + offsetField);
    if (offset < 2 || offset > quint32(head.size()) - 2)
        return ProgramKind::Dos;
    const QByteArray signature = head.mid(qsizetype(offset), 4);
    if (signature == QByteArray("PE\0\0", 4) || signature.startsWith("NE"))
        return ProgramKind::Windows;
    return ProgramKind::Dos;
}
