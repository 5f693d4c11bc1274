// The sending thread of streamed answers: pieces reach the connection whole
// and in order, a failed connection stops the answer at the caller, and an
// abandoned answer never hangs its caller.
#include <QueuedStream.h>

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

using namespace zda::cimserver;

namespace
{

// A connection that records what it is given, optionally slowly, and
// fails on the send numbered `failAt` (from 1; 0: never).
class RecordingConnection : public ResponseStream
{
public:
    explicit RecordingConnection(unsigned failAt = 0, int delayMs = 0) : _failAt(failAt), _delayMs(delayMs) {}

    void begin(HttpResponseHead&) override { record("begin"); }
    void send(const char* data, std::size_t size) override
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(_delayMs));
        std::lock_guard<std::mutex> lock(_mutex);
        if (++_sends == _failAt)
            throw ConnectionLost("the client went away");
        _events.emplace_back(data, size);
    }
    void end(const boost::beast::http::fields&) override { record("end"); }

    std::vector<std::string> events()
    {
        std::lock_guard<std::mutex> lock(_mutex);
        return _events;
    }

private:
    void record(const char* what)
    {
        std::lock_guard<std::mutex> lock(_mutex);
        _events.push_back(what);
    }

    const unsigned _failAt;
    const int _delayMs;
    std::mutex _mutex;
    unsigned _sends = 0;
    std::vector<std::string> _events;
};

std::string piece(int n)
{
    return "piece-" + std::to_string(n) + std::string(std::size_t(n % 7) * 1000, 'x');
}

// Begins the answer and sends pieces 0 to count - 1.
void beginAndSend(QueuedStream& queued, int count)
{
    HttpResponseHead head;
    queued.begin(head);
    for (int i = 0; i < count; i++)
    {
        std::string p = piece(i);
        queued.send(p.data(), p.size());
    }
}

}  // namespace

// With a piece size of 1 every send is a piece of its own; with a larger
// one, sends after the first are gathered into pieces of at least that size
// (the first goes at once, as it came). Either way the body arrives whole
// and in order between the head and the end, even though the caller reuses
// its buffer at once, and what is sent before begin() is written at once.
TEST(QueuedStreamTest, PiecesArriveWholeAndInOrderGatheredToThePieceSize)
{
    for (std::size_t pieceSize : {std::size_t(1), std::size_t(10000)})
    {
        SCOPED_TRACE(pieceSize);
        RecordingConnection connection(0, pieceSize == 1 ? 1 : 0);
        std::string expected;
        {
            QueuedStream queued(connection, 2, pieceSize);
            queued.send("before", 6);
            HttpResponseHead head;
            queued.begin(head);
            for (int i = 0; i < 200; i++)
            {
                std::string p = piece(i);
                expected += p;
                queued.send(p.data(), p.size());
                p.assign(p.size(), '?');
            }
            queued.end(boost::beast::http::fields());
        }
        std::vector<std::string> events = connection.events();
        ASSERT_GE(events.size(), 5u);
        EXPECT_EQ(events[0], "before");
        EXPECT_EQ(events[1], "begin");
        EXPECT_EQ(events[2], piece(0));
        EXPECT_EQ(events.back(), "end");
        std::string body;
        for (std::size_t i = 2; i + 1 < events.size(); i++)
        {
            if (pieceSize == 1)
            {
                EXPECT_EQ(events[i], piece(int(i) - 2));
            }
            else if (i > 2 && i + 2 < events.size())
            {  // the gathered ones, but the last, are full
                EXPECT_GE(events[i].size(), pieceSize);
            }
            body += events[i];
        }
        EXPECT_EQ(body, expected);
        EXPECT_EQ(events.size() < 200u, pieceSize > 1);
    }
}

TEST(QueuedStreamTest, AFailedConnectionStopsTheAnswerAtTheCaller)
{
    RecordingConnection connection(3);
    QueuedStream queued(connection, 2, 1);
    EXPECT_THROW(
        {
            beginAndSend(queued, 1000);
            queued.end(boost::beast::http::fields());
        },
        ConnectionLost);
    std::vector<std::string> events = connection.events();
    // The head and the two pieces before the failure; nothing after it,
    // and no end.
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[2], piece(1));
}

TEST(QueuedStreamTest, AnAbandonedAnswerReleasesItsCallerPromptly)
{
    RecordingConnection connection(0, 50);
    const auto start = std::chrono::steady_clock::now();
    {
        QueuedStream queued(connection, 3, 1);
        beginAndSend(queued, 4);
    }  // destroyed without end(): what still waits is dropped
    const auto elapsed = std::chrono::steady_clock::now() - start;
    std::vector<std::string> events = connection.events();
    EXPECT_LT(events.size(), 5u);
    EXPECT_NE(events.back(), "end");
    EXPECT_LT(elapsed, std::chrono::seconds(5));
}
