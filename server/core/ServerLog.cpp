#include "ServerLog.h"

#include <cstdarg>
#include <cstdio>
#include <memory>

namespace zda::server
{

namespace
{

void writeToStderr(int level, const std::string& line)
{
    if (level <= 3)
        std::fprintf(stderr, "%s\n", line.c_str());
}

// Held through a shared pointer so that a line being written keeps the sink
// it started with alive while another thread replaces it.
std::shared_ptr<const LogSink>& currentSink()
{
    static std::shared_ptr<const LogSink> sink = std::make_shared<const LogSink>(writeToStderr);
    return sink;
}

}  // namespace

void setLogSink(LogSink sink)
{
    auto next = std::make_shared<const LogSink>(sink ? std::move(sink) : LogSink(writeToStderr));
    std::atomic_store(&currentSink(), std::move(next));
}

void logLine(int level, const std::string& line)
{
    std::shared_ptr<const LogSink> sink = std::atomic_load(&currentSink());
    (*sink)(level, line);
}

void logFormat(int level, const char* format, ...)
{
    char buffer[1024];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    if (length < 0)
        return;
    if (static_cast<size_t>(length) < sizeof buffer)
    {
        logLine(level, std::string(buffer, static_cast<size_t>(length)));
        return;
    }
    // Longer than the buffer: format again at full length.
    std::string line(static_cast<size_t>(length), '\0');
    va_start(args, format);
    std::vsnprintf(line.data(), line.size() + 1, format, args);
    va_end(args);
    logLine(level, line);
}

}  // namespace zda::server
