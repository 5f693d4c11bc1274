#include "QueuedStream.h"

namespace zda::cimserver
{

QueuedStream::QueuedStream(ResponseStream& connection, std::size_t maxPieces, std::size_t pieceSize)
    : _connection(connection), _maxPieces(maxPieces == 0 ? 1 : maxPieces), _pieceSize(pieceSize)
{}

QueuedStream::~QueuedStream()
{
    stopSender(true);
}

void QueuedStream::begin(HttpResponseHead& head)
{
    _connection.begin(head);
    _sender = std::thread([this] { run(); });
}

void QueuedStream::send(const char* data, std::size_t size)
{
    if (size == 0)
        return;
    if (!_sender.joinable())
    {
        // Not begun: nothing to overlap with.
        _connection.send(data, size);
        return;
    }
    // The copy is made outside the lock, so the sender is never held up.
    _gathering.append(data, size);
    if (_gathering.size() >= _pieceSize || !_anyQueued)
        queueGathered();
}

void QueuedStream::queueGathered()
{
    {
        std::unique_lock<std::mutex> lock(_mutex);
        _room.wait(lock, [this] { return _pieces.size() < _maxPieces || _failure; });
        rethrowFailure();
        _pieces.push_back(std::move(_gathering));
        _anyQueued = true;
        _gathering.clear();
        if (!_spare.empty())
        {
            _gathering = std::move(_spare.back());
            _spare.pop_back();
        }
    }
    _queued.notify_one();
}

void QueuedStream::end(const boost::beast::http::fields& trailer)
{
    if (_sender.joinable() && !_gathering.empty())
        queueGathered();
    stopSender(false);
    {
        std::lock_guard<std::mutex> lock(_mutex);
        rethrowFailure();
    }
    _connection.end(trailer);
}

void QueuedStream::stopSender(bool dropPending)
{
    if (!_sender.joinable())
        return;
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _stopping = true;
        _dropPending = dropPending;
    }
    _queued.notify_one();
    _sender.join();
}

void QueuedStream::rethrowFailure()
{
    if (_failure)
        std::rethrow_exception(_failure);
}

void QueuedStream::run()
{
    for (;;)
    {
        std::string piece;
        {
            std::unique_lock<std::mutex> lock(_mutex);
            _queued.wait(lock, [this] { return !_pieces.empty() || _stopping; });
            if (_pieces.empty() || _dropPending)
                return;
            piece = std::move(_pieces.front());
            _pieces.pop_front();
        }
        try
        {
            _connection.send(piece.data(), piece.size());
        }
        catch (...)
        {
            std::lock_guard<std::mutex> lock(_mutex);
            _failure = std::current_exception();
            _pieces.clear();
            _room.notify_all();
            return;
        }
        {
            std::lock_guard<std::mutex> lock(_mutex);
            piece.clear();
            _spare.push_back(std::move(piece));
        }
        _room.notify_one();
    }
}

}  // namespace zda::cimserver
