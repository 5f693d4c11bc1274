// Short, stable text forms of SDK values for test assertions and traces.
#ifndef ZDA_TESTS_SDK_TEXT_H
#define ZDA_TESTS_SDK_TEXT_H

#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMPropertyList.h>
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/String.h>

#include <string>

namespace zda_test
{

std::string text(const Pegasus::String& s);
// A null name is "-".
std::string text(const Pegasus::CIMName& name);
std::string text(const Pegasus::CIMNamespaceName& name);
std::string text(const Pegasus::CIMObjectPath& path);
// "all" for a null list, else "[A,B]".
std::string text(const Pegasus::CIMPropertyList& list);
std::string text(bool flag);  // "1" or "0"

// The user name of the context's IdentityContainer, or "<none>".
std::string userOf(const Pegasus::OperationContext& context);

}  // namespace zda_test

#endif
