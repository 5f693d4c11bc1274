// Delivers ZDA_BENCH_INSTANCES (default 100000) instances of Bench_Item,
// each about 1.7 KB once encoded, for the server benchmark.
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/ProviderException.h>

#include <cstdio>
#include <cstdlib>
#include <string>

PEGASUS_USING_PEGASUS;

namespace
{

class ItemProvider : public CIMInstanceProvider
{
public:
    void initialize(CIMOMHandle&) override {}
    void terminate() override { delete this; }

    void enumerateInstances(const OperationContext&, const CIMObjectPath& ref, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler& handler) override
    {
        const char* env = std::getenv("ZDA_BENCH_INSTANCES");
        const unsigned long count = env ? std::strtoul(env, nullptr, 10) : 100000;
        const String filler(std::string(104, 'x').c_str());
        handler.processing();
        for (unsigned long i = 0; i < count; i++)
        {
            char id[32];
            std::snprintf(id, sizeof id, "item%06lu", i);
            CIMInstance item("Bench_Item");
            item.addProperty(CIMProperty("Id", String(id)));
            item.addProperty(CIMProperty("Number", Uint64(i)));
            for (int t = 1; t <= 8; t++)
                item.addProperty(CIMProperty(CIMName(("Text" + std::to_string(t)).c_str()), filler));
            Array<CIMKeyBinding> keys;
            keys.append(CIMKeyBinding("Id", String(id), CIMKeyBinding::STRING));
            item.setPath(CIMObjectPath(String(), ref.getNameSpace(), "Bench_Item", keys));
            handler.deliver(item);
        }
        handler.complete();
    }

    void getInstance(const OperationContext&, const CIMObjectPath&, const Boolean, const Boolean,
        const CIMPropertyList&, InstanceResponseHandler&) override
    {
        throw CIMNotSupportedException("getInstance");
    }
    void enumerateInstanceNames(
        const OperationContext&, const CIMObjectPath&, ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("enumerateInstanceNames");
    }
    void modifyInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&, const Boolean,
        const CIMPropertyList&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("modifyInstance");
    }
    void createInstance(const OperationContext&, const CIMObjectPath&, const CIMInstance&,
        ObjectPathResponseHandler&) override
    {
        throw CIMNotSupportedException("createInstance");
    }
    void deleteInstance(const OperationContext&, const CIMObjectPath&, ResponseHandler&) override
    {
        throw CIMNotSupportedException("deleteInstance");
    }
};

}  // namespace

PEGASUS_NAMESPACE_BEGIN
extern "C" PEGASUS_EXPORT CIMProvider* PegasusCreateProvider(const String& name)
{
    if (String::equalNoCase(name, "Bench_ItemProvider"))
        return new ItemProvider;
    return 0;
}
PEGASUS_NAMESPACE_END
