#include "freshmemory.h"

#include <QTest>

#include <cstdint>
#include <cstring>

class tst_FreshMemory : public QObject
{
    Q_OBJECT

private slots:
    // Regions below a page, between a page and a huge page, and over a huge page: each is usable
    // whole, readied in part or past its end, and given back without touching its neighbours.
    void regionsAreUsableWholeAndGivenBackExactly()
    {
        for (const size_t bytes : {size_t(1), size_t(5000), FreshMemory::kHugePage - 1, FreshMemory::kHugePage + 1}) {
            FreshMemory region(bytes);
            QVERIFY(region.size() >= bytes);
            QVERIFY(bytes < FreshMemory::kHugePage || reinterpret_cast<uintptr_t>(region.data()) % FreshMemory::kHugePage == 0);
            region.prepare(bytes / 2);
            region.prepare(region.size() * 4);
            std::memset(region.data(), 0x5a, region.size());
            char *before = static_cast<char *>(FreshMemory::takeReady(bytes));
            char *after = static_cast<char *>(FreshMemory::takeReady(bytes));
            std::memset(before, 1, bytes);
            std::memset(after, 2, bytes);
            FreshMemory::release(before, bytes);
            QVERIFY(after[0] == 2 && after[bytes - 1] == 2);
            FreshMemory::release(after, bytes);
            QCOMPARE(region.data()[region.size() - 1], char(0x5a));
        }
    }

    // A moved region owns its memory once; a vector of a type aligned beyond malloc's keeps its
    // alignment as it grows.
    void movesAndAlignment()
    {
        FreshMemory first(100);
        first.data()[0] = 'x';
        FreshMemory second(std::move(first));
        QVERIFY(first.data() == nullptr && second.data()[0] == 'x');
        first = std::move(second);
        QCOMPARE(first.data()[0], 'x');
        first.prepare(10);
        second.prepare(10); // a region moved from is harmless
        struct alignas(64) Line
        {
            char bytes[64];
        };
        LargeVector<Line> lines;
        for (int i = 0; i < 5000; ++i) {
            lines.push_back({{char(i % 100)}});
            QCOMPARE(reinterpret_cast<uintptr_t>(lines.data()) % 64, uintptr_t(0));
        }
        QCOMPARE(lines[4999].bytes[0], char(99));
    }
};

QTEST_APPLESS_MAIN(tst_FreshMemory)
#include "tst_freshmemory.moc"
