#include "RequestPool.h"

namespace zda::cimserver
{

RequestPool::RequestPool(unsigned keep, std::chrono::milliseconds idleLimit)
    : _keep(keep == 0 ? 1 : keep), _idleLimit(idleLimit)
{}

RequestPool::~RequestPool()
{
    stop();
}

void RequestPool::post(std::function<void()> task)
{
    std::unique_lock<std::mutex> lock(_mutex);
    if (_stopping)
        return;
    _tasks.push_back(std::move(task));
    if (_tasks.size() > _idle)
    {
        _threads.emplace_back();
        auto self = std::prev(_threads.end());
        *self = std::thread([this, self] { work(self); });
    }
    else
    {
        _wake.notify_one();
    }
    // Threads that ended are joined here, off their own stack.
    std::vector<std::list<std::thread>::iterator> finished;
    finished.swap(_finished);
    std::vector<std::thread> joining;
    for (auto it : finished)
    {
        joining.push_back(std::move(*it));
        _threads.erase(it);
    }
    lock.unlock();
    for (auto& t : joining)
        t.join();
}

void RequestPool::stop()
{
    std::list<std::thread> threads;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stopping = true;
        _tasks.clear();
        threads.swap(_threads);
        _finished.clear();
    }
    _wake.notify_all();
    for (auto& t : threads)
        if (t.joinable())
            t.join();
}

std::size_t RequestPool::threads() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _threads.size() - _finished.size();
}

void RequestPool::work(std::list<std::thread>::iterator self)
{
    std::unique_lock<std::mutex> lock(_mutex);
    for (;;)
    {
        _idle++;
        bool woken = _wake.wait_for(lock, _idleLimit, [this] { return !_tasks.empty() || _stopping; });
        _idle--;
        if (_stopping)
            return;
        if (!woken)
        {
            if (_threads.size() - _finished.size() > _keep)
            {
                _finished.push_back(self);
                return;
            }
            continue;
        }
        std::function<void()> task = std::move(_tasks.front());
        _tasks.pop_front();
        lock.unlock();
        task();
        task = nullptr;  // what it holds goes before the lock is taken again
        lock.lock();
    }
}

}  // namespace zda::cimserver
