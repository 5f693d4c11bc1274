// The server's log. Every part of the server writes its lines here; the
// program decides where they go (zda-cimserver hands them to the array
// library's log, with its file and threshold), so the engine itself does
// not depend on any particular log.
#ifndef ZDA_SERVER_LOG_H
#define ZDA_SERVER_LOG_H

#include <functional>
#include <string>

namespace zda::server
{

// Receives log lines (level 2 errors, 3 warnings, 4 trace) without a
// trailing newline.
using LogSink = std::function<void(int level, const std::string& line)>;

// Sends the server's lines to `sink` from now on, process-wide. An empty
// sink restores the default, which writes errors and warnings to stderr.
// Meant to be set once at start-up; lines being written meanwhile go to
// either sink.
void setLogSink(LogSink sink);

// Writes one line to the sink.
void logLine(int level, const std::string& line);

// Writes one line formatted as by printf.
void logFormat(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace zda::server

#endif
