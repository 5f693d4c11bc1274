#include "ProviderErrors.h"

#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>

#include <cxxabi.h>
#include <exception>

using namespace Pegasus;

namespace zda::server
{

void rethrowAsCIMException()
{
    try
    {
        throw;
    }
    catch (const CIMException&)
    {
        throw;
    }
    catch (const Exception& e)
    {
        throw CIMException(CIM_ERR_FAILED, e.getMessage());
    }
    catch (abi::__forced_unwind&)
    {
        throw;
    }
    catch (const std::exception& e)
    {
        throw CIMException(CIM_ERR_FAILED, e.what());
    }
    catch (...)
    {
        throw CIMException(CIM_ERR_FAILED, "Unknown error.");
    }
}

String errorDescription(const CIMException& error)
{
    return TraceableCIMException(error).getDescription();
}

}  // namespace zda::server
