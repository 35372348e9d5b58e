#include "programkind.h"

#include <QtEndian>
#include <QTest>

namespace {
// An "MZ" image of `size` bytes whose header offset points to `signature` at `offset`.
QByteArray mzImage(quint32 offset, const QByteArray &signature, qsizetype size = 512)
{
    QByteArray image(size, '\0');
    image[0] = 'M';
    image[1] = 'Z';
    qToLittleEndian<quint32>(offset, image.data() + 0x3C);
    if (offset + quint32(signature.size()) <= quint32(size))
        image.replace(qsizetype(offset), signature.size(), signature);
    return image;
}
}

class TestProgramKind : public QObject
{
    Q_OBJECT
private slots:
    void kinds_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<int>("kind");
        QTest::newRow("COM: jump first") << QByteArray("\xE9\x10\x00\xCD\x20", 5) << int(ProgramKind::Com);
        QTest::newRow("empty file") << QByteArray() << int(ProgramKind::Com);
        QTest::newRow("PE") << mzImage(0x80, QByteArray("PE\0\0", 4)) << int(ProgramKind::Windows);
        QTest::newRow("NE") << mzImage(0x80, "NE\x05\x0A") << int(ProgramKind::Windows);
        QTest::newRow("DOS: no new header") << mzImage(0, "") << int(ProgramKind::Dos);
        QTest::newRow("DOS: offset to other bytes") << mzImage(0x40, "LE\0\0") << int(ProgramKind::Dos);
        QTest::newRow("DOS: offset past the head") << mzImage(0x10000, "") << int(ProgramKind::Dos);
        QTest::newRow("NE in the head's last bytes") << mzImage(0x1FE, "NE") << int(ProgramKind::Windows);
        QTest::newRow("DOS: PE cut short") << mzImage(0x1FF, "P") << int(ProgramKind::Dos);
        QTest::newRow("DOS: header too short") << QByteArray("MZ\x90\x00", 4) << int(ProgramKind::Dos);
    }
    void kinds()
    {
        QFETCH(QByteArray, head);
        QFETCH(int, kind);
        QCOMPARE(int(programKindOf(head)), kind);
    }
};

QTEST_GUILESS_MAIN(TestProgramKind)
#include "tst_programkind.moc"
