#include "SdkText.h"

using namespace Pegasus;

namespace zda_test
{

std::string text(const String& s)
{
    return std::string((const char*)s.getCString());
}

std::string text(const CIMName& name)
{
    return name.isNull() ? "-" : text(name.getString());
}

std::string text(const CIMNamespaceName& name)
{
    return text(name.getString());
}

std::string text(const CIMObjectPath& path)
{
    return text(path.toString());
}

std::string text(const CIMPropertyList& list)
{
    if (list.isNull())
        return "all";
    std::string names = "[";
    for (Uint32 i = 0; i < list.size(); i++)
        names += (i ? "," : "") + text(list[i]);
    return names + "]";
}

std::string text(bool flag)
{
    return flag ? "1" : "0";
}

std::string userOf(const OperationContext& context)
{
    if (!context.contains(IdentityContainer::NAME))
        return "<none>";
    return text(IdentityContainer(context.get(IdentityContainer::NAME)).getUserName());
}

}  // namespace zda_test
