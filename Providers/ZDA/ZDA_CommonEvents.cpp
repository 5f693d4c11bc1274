// Filling of the audit event record the array logs with each change.
#include "ZDA_Common.h"

#include <cstring>

PEGASUS_NAMESPACE_BEGIN

namespace
{

// Copies text into a field of `size` bytes, cut to size - 1 characters and
// always terminated.
void copyField(char* field, size_t size, const char* text)
{
    std::strncpy(field, text, size - 1);
    field[size - 1] = '\0';
}

}  // namespace

void ZDA_Common::setEventParam(_api_evtparam_t* eventp, const char* className, const char* method,
    const char* op, const char* user, const char* addr)
{
    if (!eventp)
    {
        log_message(2,
            "setEventParam: Unable to log event data. The control block pointer "
            "(eventp) is null.\n");
        return;
    }

    // "<className>:<method>": the class leaves room for the colon.
    const size_t methodSize = sizeof eventp->method;
    if (className)
    {
        copyField(eventp->method, methodSize - 1, className);
        std::strcat(eventp->method, ":");
    }
    else if (method)
    {
        std::strcpy(eventp->method, ":");
    }
    if (method)
    {
        const size_t used = std::strlen(eventp->method);
        std::strncat(eventp->method, method, methodSize - 1 - used);
    }

    if (op)
        copyField(eventp->inst_op, sizeof eventp->inst_op, op);
    if (user)
        copyField(eventp->user, sizeof eventp->user, user);
    if (addr)
        copyField(eventp->addr, sizeof eventp->addr, addr);
}

void ZDA_Common::setEventParam(_api_evtparam_t* eventp, const char* className, const char* method,
    const char* op, const char* user, const char* addr, const char* evtText)
{
    setEventParam(eventp, className, method, op, user, addr);
    if (eventp && evtText)
        copyField(eventp->inst_param, sizeof eventp->inst_param, evtText);
}

void ZDA_Common::setEventOp(_api_evtparam_t* eventp, const char* op)
{
    if (!eventp)
    {
        log_message(2,
            "setEventOp: Unable to log event data. The control block pointer "
            "(eventp) is null.\n");
        return;
    }
    if (op)
        copyField(eventp->inst_op, sizeof eventp->inst_op, op);
}

PEGASUS_NAMESPACE_END
