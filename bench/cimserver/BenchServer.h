// What the server benchmarks share: a real zda-cimserver started on a free
// loopback port in a folder of its own, CIM-XML requests posted to it over
// HTTP as admin, and the server's CPU time and peak memory from /proc.
#ifndef ZDA_BENCH_SERVER_H
#define ZDA_BENCH_SERVER_H

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace zda_bench
{

// Prints "<program>: <why>" and exits with 1.
[[noreturn]] void fail(const std::string& why);

// The server, started with `args` after the listener and state options, and
// stopped (SIGTERM, its folder removed) when the object goes.
class Server
{
public:
    explicit Server(const std::vector<std::string>& args);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int port() const { return _port; }
    pid_t pid() const { return _pid; }
    const std::string& folder() const { return _folder; }

private:
    std::string _folder;
    pid_t _pid = -1;
    int _port = 0;
};

// One answer: its time from sending to the last byte, its size, how often
// `marker` occurs in it, and the body itself when it was asked to be kept.
struct Answer
{
    double seconds = 0;
    std::size_t bytes = 0;
    std::size_t markers = 0;
    std::string text;
    bool ok = false;  // HTTP 200
};

// Posts the CIM-XML `body` (a whole <CIM> document) with the CIMMethod and
// CIMObject headers given, as admin:admin-demo.
Answer post(int port, const std::string& cimMethod, const std::string& cimObject, const std::string& body,
    const std::string& marker, bool keepText);

// A <CIM> document around one intrinsic method call in `nameSpace`
// ("root/zda") with the IPARAMVALUE elements given.
std::string intrinsicCall(
    const std::string& method, const std::string& nameSpace, const std::string& parameters);
// A <CIM> document around an extrinsic call of `method` on the class
// `className` of `nameSpace`, without parameters.
std::string classMethodCall(
    const std::string& method, const std::string& nameSpace, const std::string& className);

// User plus system CPU time the process has used so far, in seconds.
double cpuSeconds(pid_t pid);
// The process's peak resident memory in KiB, -1 when unknown.
long peakKiB(pid_t pid);

}  // namespace zda_bench

#endif
