#include "ZRPlayerQueue.h"

#include <QtTest>

#include <atomic>
#include <thread>
#include <type_traits>

namespace {

struct Item {
    explicit Item(int number = 0) : number(number) { ++alive; }
    ~Item() { --alive; }
    Item(const Item &) = delete;
    Item &operator=(const Item &) = delete;

    int number;
    static inline std::atomic<int> alive{0};
};

using Queue = ZRPlayerQueue<Item>;

}

class tst_ZRPlayerQueue : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();
    void isNotCopied();
    void popOfAnEmptyQueueIsNullAtOnce();
    void keepsTheOrder();
    void poppedItemIsTheCallers();
    void sizeCountsWhatIsHeld();
    void hasNoLimit();
    void clearDeletesAll();
    void destructorDeletesTheRest();
    void manyThreadsLoseNothing();
    void clearBesidePushAndPop();
};

void tst_ZRPlayerQueue::cleanup()
{
    QCOMPARE(Item::alive.load(), 0);
}

void tst_ZRPlayerQueue::isNotCopied()
{
    QVERIFY(!std::is_copy_constructible<Queue>::value);
    QVERIFY(!std::is_copy_assignable<Queue>::value);
}

void tst_ZRPlayerQueue::popOfAnEmptyQueueIsNullAtOnce()
{
    Queue queue;
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!queue.pop());
    QVERIFY(!queue.pop());
    QVERIFY(clock.elapsed() < 1000);
    QCOMPARE(queue.size(), 0);
}

void tst_ZRPlayerQueue::keepsTheOrder()
{
    Queue queue;
    for (int i = 0; i < 5; ++i)
        queue.push(new Item(i));
    for (int i = 0; i < 5; ++i)
        QCOMPARE(std::unique_ptr<Item>(queue.pop())->number, i);
    QVERIFY(!queue.pop());
}

void tst_ZRPlayerQueue::poppedItemIsTheCallers()
{
    std::unique_ptr<Item> item;
    {
        Queue queue;
        queue.push(new Item(7));
        item.reset(queue.pop());
        queue.clear();
    }
    QCOMPARE(item->number, 7);
    QCOMPARE(Item::alive.load(), 1);
}

void tst_ZRPlayerQueue::sizeCountsWhatIsHeld()
{
    Queue queue;
    QCOMPARE(queue.size(), 0);
    queue.push(new Item);
    queue.push(new Item);
    QCOMPARE(queue.size(), 2);
    delete queue.pop();
    QCOMPARE(queue.size(), 1);
    queue.clear();
    QCOMPARE(queue.size(), 0);
}

void tst_ZRPlayerQueue::hasNoLimit()
{
    Queue queue;
    for (int i = 0; i < 10000; ++i)
        queue.push(new Item(i));
    QCOMPARE(queue.size(), 10000);
}

void tst_ZRPlayerQueue::clearDeletesAll()
{
    Queue queue;
    for (int i = 0; i < 3; ++i)
        queue.push(new Item(i));
    queue.clear();
    QCOMPARE(Item::alive.load(), 0);
    QVERIFY(!queue.pop());
    queue.clear();
    queue.push(new Item(4));
    QCOMPARE(std::unique_ptr<Item>(queue.pop())->number, 4);
}

void tst_ZRPlayerQueue::destructorDeletesTheRest()
{
    {
        Queue queue;
        queue.push(new Item);
        queue.push(new Item);
    }
    QCOMPARE(Item::alive.load(), 0);
}

void tst_ZRPlayerQueue::manyThreadsLoseNothing()
{
    constexpr int writers = 2;
    constexpr int each = 5000;
    Queue queue;
    std::atomic<int> taken{0};
    std::atomic<qint64> sum{0};
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer) {
        threads.emplace_back([&] {
            for (int i = 1; i <= each; ++i)
                queue.push(new Item(i));
        });
        threads.emplace_back([&] {
            while (taken < writers * each) {
                if (const std::unique_ptr<Item> item{queue.pop()}) {
                    sum += item->number;
                    ++taken;
                }
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(taken.load(), writers * each);
    QCOMPARE(sum.load(), qint64(writers) * each * (each + 1) / 2);
}

void tst_ZRPlayerQueue::clearBesidePushAndPop()
{
    Queue queue;
    std::atomic<bool> ended{false};
    std::thread writer([&] {
        for (int i = 0; i < 20000; ++i)
            queue.push(new Item(i));
        ended = true;
    });
    std::thread clearer([&] {
        while (!ended)
            queue.clear();
    });
    int last = -1;
    bool ordered = true;
    while (!ended) {
        if (const std::unique_ptr<Item> item{queue.pop()}) {
            ordered = ordered && item->number > last;
            last = item->number;
        }
    }
    writer.join();
    clearer.join();
    QVERIFY(ordered);
    queue.clear();
    QCOMPARE(Item::alive.load(), 0);
}

QTEST_APPLESS_MAIN(tst_ZRPlayerQueue)
#include "tst_ZRPlayerQueue.moc"
