// A ResponseStream that sends the body of a streamed answer from a thread
// of its own: the caller hands over each encoded piece and goes on encoding
// the next one while the previous ones are written to the connection, so
// that encoding and sending use two cores.
//
// What the caller sends after its first piece is gathered into pieces of
// about pieceSize: each piece handed over costs a thread wake-up, which is
// dear next to encoding. The first piece goes out as it is, so that the
// client sees the answer begin at once.
// At most a few pieces wait (the caller blocks for room), so the memory a
// streamed answer holds stays bounded whatever its length and however slow
// the client. A failure of the connection reaches the caller as
// ConnectionLost from a later send() or from end().
#ifndef ZDA_CIMSERVER_QUEUED_STREAM_H
#define ZDA_CIMSERVER_QUEUED_STREAM_H

#include "CimRequestHandler.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zda::cimserver
{

class QueuedStream : public ResponseStream
{
public:
    explicit QueuedStream(
        ResponseStream& connection, std::size_t maxPieces = 3, std::size_t pieceSize = 1024 * 1024);
    QueuedStream(const QueuedStream&) = delete;
    QueuedStream& operator=(const QueuedStream&) = delete;
    // Stops the sender after the piece it is writing; pieces not yet
    // written are dropped (the answer is being abandoned).
    ~QueuedStream() override;

    // Writes the head at once, then starts the sender.
    void begin(HttpResponseHead& head) override;
    // Adds a copy of the data to the piece being gathered; queues that
    // piece once it is full.
    void send(const char* data, std::size_t size) override;
    // Waits until every piece is written, then ends the body.
    void end(const boost::beast::http::fields& trailer) override;

private:
    void run();
    void queueGathered();
    void stopSender(bool dropPending);
    void rethrowFailure();

    ResponseStream& _connection;
    const std::size_t _maxPieces;
    const std::size_t _pieceSize;
    std::thread _sender;
    std::string _gathering;  // only the caller's thread touches these two
    bool _anyQueued = false;

    std::mutex _mutex;
    std::condition_variable _queued;  // a piece waits, or the sender must stop
    std::condition_variable _room;    // a piece was written, or the sender failed
    std::deque<std::string> _pieces;
    std::vector<std::string> _spare;  // written pieces, reused for the next ones
    bool _stopping = false;
    bool _dropPending = false;
    std::exception_ptr _failure;
};

}  // namespace zda::cimserver

#endif
