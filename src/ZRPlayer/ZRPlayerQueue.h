#pragma once

#include <deque>
#include <memory>
#include <mutex>

// The queue in which two stages of the player meet. Every operation locks for its own length and
// none waits: a stage that finds the queue empty or full sleeps and asks again.
// Owns its items until they are taken; has no limit of its own.
template <class T> class ZRPlayerQueue
{
public:
    ZRPlayerQueue() : items(new std::deque<T *>), mutex(new std::mutex) { }
    ~ZRPlayerQueue() { clear(); }
    ZRPlayerQueue(const ZRPlayerQueue &) = delete;
    ZRPlayerQueue &operator=(const ZRPlayerQueue &) = delete;

    // Takes ownership.
    void push(T *item)
    {
        const std::lock_guard<std::mutex> lock(*mutex);
        items->push_back(item);
    }

    // The front, which is then the caller's; null when there is none.
    T *pop()
    {
        const std::lock_guard<std::mutex> lock(*mutex);
        if (items->empty())
            return nullptr;
        T *item = items->front();
        items->pop_front();
        return item;
    }

    int size() const
    {
        const std::lock_guard<std::mutex> lock(*mutex);
        return static_cast<int>(items->size());
    }

    // Deletes every item.
    void clear()
    {
        const std::lock_guard<std::mutex> lock(*mutex);
        for (T *item : *items)
            delete item;
        items->clear();
    }

private:
    std::unique_ptr<std::deque<T *>> items;
    std::unique_ptr<std::mutex> mutex;
};
