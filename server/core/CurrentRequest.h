// The request a thread is serving: set by the dispatcher around each
// provider call, so that an upcall the provider makes on that thread with an
// empty OperationContext can carry the identity of the request it serves.
//
// Scopes nest (a provider's upcall is served on the same thread, inside the
// outer scope) and are strictly per thread.
#ifndef ZDA_SERVER_CURRENT_REQUEST_H
#define ZDA_SERVER_CURRENT_REQUEST_H

#include <Pegasus/Common/OperationContext.h>

namespace zda::server
{

class CurrentRequestScope
{
public:
    // `context` is the context the provider receives; it must outlive the
    // scope.
    explicit CurrentRequestScope(const Pegasus::OperationContext& context);
    ~CurrentRequestScope();

    CurrentRequestScope(const CurrentRequestScope&) = delete;
    CurrentRequestScope& operator=(const CurrentRequestScope&) = delete;

    // The context of the innermost request this thread is serving, or null
    // when the thread is not inside a provider call.
    static const Pegasus::OperationContext* current();

private:
    const Pegasus::OperationContext* _previous;
};

// Marks the thread as serving no request, for work that belongs to no
// request even when a request triggered it (a provider's initialize): its
// upcalls then run as the local identity, whoever came first.
class OutsideRequestScope
{
public:
    OutsideRequestScope();
    ~OutsideRequestScope();

    OutsideRequestScope(const OutsideRequestScope&) = delete;
    OutsideRequestScope& operator=(const OutsideRequestScope&) = delete;

private:
    const Pegasus::OperationContext* _previous;
};

}  // namespace zda::server

#endif
