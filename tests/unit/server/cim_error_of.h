// The CIM error a call ends with, for tests that expect one.
#ifndef ZDA_TESTS_SERVER_CIM_ERROR_OF_H
#define ZDA_TESTS_SERVER_CIM_ERROR_OF_H

#include <Pegasus/Common/Exception.h>

#include <string>

namespace zda_test
{

// Runs `call` and returns the code of the CIMException it throws (and its
// message through `message`), or CIM_ERR_SUCCESS when it throws nothing.
template <class Call>
int cimErrorOf(Call&& call, std::string* message = nullptr)
{
    try
    {
        call();
    }
    catch (const Pegasus::CIMException& e)
    {
        if (message)
            *message = (const char*)e.getMessage().getCString();
        return int(e.getCode());
    }
    return Pegasus::CIM_ERR_SUCCESS;
}

}  // namespace zda_test

#endif
