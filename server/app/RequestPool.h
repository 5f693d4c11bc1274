// The threads that run requests. A request can hold its thread for long (a
// provider delivering a long answer to a client that reads slowly), so the
// pool never makes a request wait for another: when no thread is free it
// starts one. The listener has at most one request per connection in
// flight, so the connection caps bound the threads. Threads beyond the
// `keep` that stay idle for a while end.
#ifndef ZDA_CIMSERVER_REQUEST_POOL_H
#define ZDA_CIMSERVER_REQUEST_POOL_H

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace zda::cimserver
{

class RequestPool
{
public:
    explicit RequestPool(unsigned keep, std::chrono::milliseconds idleLimit = std::chrono::seconds(10));
    ~RequestPool();

    RequestPool(const RequestPool&) = delete;
    RequestPool& operator=(const RequestPool&) = delete;

    // Runs `task` on a free thread, or on a new one. Dropped after stop().
    void post(std::function<void()> task);

    // Drops the tasks not yet started and waits for the running ones.
    // Idempotent.
    void stop();

    // Threads now (running or idle); for tests and logs.
    std::size_t threads() const;

private:
    void work(std::list<std::thread>::iterator self);
    void joinFinished();

    const unsigned _keep;
    const std::chrono::milliseconds _idleLimit;
    mutable std::mutex _mutex;
    std::condition_variable _wake;
    std::deque<std::function<void()>> _tasks;
    std::list<std::thread> _threads;
    std::vector<std::list<std::thread>::iterator> _finished;  // ended, to be joined
    unsigned _idle = 0;
    bool _stopping = false;
};

}  // namespace zda::cimserver

#endif
