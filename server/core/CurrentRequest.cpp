#include "CurrentRequest.h"

namespace zda::server
{

namespace
{
thread_local const Pegasus::OperationContext* innermost = nullptr;
}

CurrentRequestScope::CurrentRequestScope(const Pegasus::OperationContext& context) : _previous(innermost)
{
    innermost = &context;
}

CurrentRequestScope::~CurrentRequestScope()
{
    innermost = _previous;
}

const Pegasus::OperationContext* CurrentRequestScope::current()
{
    return innermost;
}

OutsideRequestScope::OutsideRequestScope() : _previous(innermost)
{
    innermost = nullptr;
}

OutsideRequestScope::~OutsideRequestScope()
{
    innermost = _previous;
}

}  // namespace zda::server
