// Status records, the array semaphore, logging and small helpers.
#include <arpa/inet.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "call.h"

using namespace zdasim;

namespace
{

std::string vformat(const char* format, va_list ap)
{
    va_list copy;
    va_copy(copy, ap);
    char small[512];
    int n = std::vsnprintf(small, sizeof small, format, copy);
    va_end(copy);
    if (n < 0)
        return {};
    if (static_cast<size_t>(n) < sizeof small)
        return std::string(small, n);
    std::string big(static_cast<size_t>(n) + 1, '\0');
    std::vsnprintf(&big[0], big.size(), format, ap);
    big.resize(n);
    return big;
}

std::string withoutTrailingNewlines(std::string s)
{
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r'))
        s.pop_back();
    return s;
}

}  // namespace

extern "C"
{

    void api_initStatus(api_Status_t* status)
    {
        if (!status)
            return;
        status->code = 0;
        status->text[0] = '\0';
    }

    void errinfo_set_str(api_Status_t* status, int code, const char* text)
    try
    {
        if (!status)
            return;
        status->code = code;
        copyText(status->text, sizeof status->text, str(text));
    }
    catch (...)
    {
        caughtAtBoundary("errinfo_set_str");
    }

    char* api_getErrorTextNoNL(char* buffer, int size, const api_Status_t* status)
    try
    {
        if (!buffer || size <= 0)
            return buffer;
        std::string text;
        if (status)
        {
            text = withoutTrailingNewlines(
                std::string(status->text, strnlen(status->text, sizeof status->text)));
            if (text.empty() && status->code != 0)
                text = "Array error " + std::to_string(status->code);
        }
        copyText(buffer, static_cast<size_t>(size), text);
        return buffer;
    }
    catch (...)
    {
        caughtAtBoundary("api_getErrorTextNoNL");
        if (buffer && size > 0)
            buffer[0] = '\0';
        return buffer;
    }

    int cim_sem_wait(void)
    try
    {
        Runtime& rt = runtime();
        int rc = rt.sem.wait();
        rt.journal.add("cim_sem_wait -> " + std::to_string(rc));
        return rc;
    }
    catch (...)
    {
        // A failed wait must not leave the semaphore held: the caller posts
        // only after a successful one.
        if (runtime().sem.heldByCaller())
            runtime().sem.post();
        return caughtAtBoundary("cim_sem_wait").code;
    }

    void cim_sem_post(void)
    try
    {
        Runtime& rt = runtime();
        rt.sem.post();
        rt.journal.add("cim_sem_post");
    }
    catch (...)
    {
        caughtAtBoundary("cim_sem_post");
    }

    void log_message(int level, const char* format, ...)
    try
    {
        if (!format)
            return;
        va_list ap;
        va_start(ap, format);
        std::string line = withoutTrailingNewlines(vformat(format, ap));
        va_end(ap);
        runtime().log.write(level, line);
    }
    catch (...)
    {
        caughtAtBoundary("log_message");
    }

    void zda_print_no_evt(const char* format, ...)
    try
    {
        if (!format)
            return;
        va_list ap;
        va_start(ap, format);
        std::string line = withoutTrailingNewlines(vformat(format, ap));
        va_end(ap);
        runtime().log.write(LOG_LEVEL_ERROR, line);
    }
    catch (...)
    {
        caughtAtBoundary("zda_print_no_evt");
    }

    void zda_panic(const char* format, ...)
    {
        std::string line = "panic";
        if (format)
        {
            va_list ap;
            va_start(ap, format);
            line = withoutTrailingNewlines(vformat(format, ap));
            va_end(ap);
        }
        runtime().log.write(LOG_LEVEL_ERROR, line);
        std::fprintf(stderr, "%s\n", line.c_str());
        std::abort();
    }

    void free_if_not_null(void* p)
    try
    {
        if (!p)
            return;
        runtime().ledger.releaseAny(p);
    }
    catch (...)
    {
        caughtAtBoundary("free_if_not_null");
    }

    int validateConvertIP(const char* addressText, char* buffer, int size)
    try
    {
        if (!addressText || !buffer || size <= 0)
            return -1;
        unsigned char bin[16];
        char text[INET6_ADDRSTRLEN];
        if (inet_pton(AF_INET6, addressText, bin) == 1)
        {
            if (!inet_ntop(AF_INET6, bin, text, sizeof text))
                return -1;
            copyText(buffer, static_cast<size_t>(size), text);
            return AF_INET6;
        }
        if (inet_pton(AF_INET, addressText, bin) == 1)
        {
            if (!inet_ntop(AF_INET, bin, text, sizeof text))
                return -1;
            copyText(buffer, static_cast<size_t>(size), text);
            return AF_INET;
        }
        return -1;
    }
    catch (...)
    {
        caughtAtBoundary("validateConvertIP");
        return -1;
    }

    int cluster_num_nodes_alive(void)
    try
    {
        ApiCall call("cluster_num_nodes_alive", Sem::NotNeeded);
        if (call.fault())
            return call.done(call.fault()->code);
        return call.done(call.model().system.nodesAlive);
    }
    catch (...)
    {
        caughtAtBoundary("cluster_num_nodes_alive");
        return 0;
    }

}  // extern "C"
