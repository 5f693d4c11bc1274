// Loads the compatibility provider module the way a server does (dlopen,
// PegasusCreateProvider by registered name, initialize with a host-attached
// CIMOMHandle) and drives it through its interfaces.
#include <Pegasus/Provider/CIMInstanceProvider.h>
#include <Pegasus/Provider/CIMMethodProvider.h>
#include <Pegasus/Provider/CIMAssociationProvider.h>
#include <Pegasus/Provider/CIMOMHandleBackend.h>
#include <Pegasus/Common/MessageLoader.h>
#include <Pegasus/Common/InternalException.h>

#include <gtest/gtest.h>

#include "RecordingResponseHandler.h"
#include "RecordingFakes.h"
#include "SdkText.h"
#include "sdk_fixtures.h"

#include <dlfcn.h>

#include <memory>
#include <string>

PEGASUS_USING_PEGASUS;
using sdktest::thrownBy;
using zda_test::RecordingResponseHandler;
using zda_test::text;

namespace
{

typedef CIMProvider* (*CreateProviderFunction)(const String&);

class CompatModuleTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        module = dlopen(COMPAT_PROVIDER_MODULE, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(nullptr, module) << dlerror();
        createProvider = reinterpret_cast<CreateProviderFunction>(dlsym(module, "PegasusCreateProvider"));
        ASSERT_NE(nullptr, createProvider) << "the entry point must be exported unmangled";
    }

    static void TearDownTestSuite()
    {
        if (module)
            dlclose(module);
        module = nullptr;
    }

    // The host side the providers see through their CIMOMHandle.
    void SetUp() override { attachCIMOMHandleBackend(cimom, backend); }

    void TearDown() override
    {
        for (CIMProvider* provider : created)
            provider->terminate();
        attachCIMOMHandleBackend(cimom, nullptr);
    }

    // Creates and initializes a provider as a server does.
    CIMProvider* load(const char* name)
    {
        CIMProvider* provider = createProvider(name);
        if (provider)
        {
            provider->initialize(cimom);
            created.push_back(provider);
        }
        return provider;
    }

    // A request as the server passes it on: from user "alice".
    static OperationContext request()
    {
        OperationContext context;
        context.insert(IdentityContainer("alice"));
        return context;
    }

    static CIMObjectPath volume(const char* name)
    {
        return CIMObjectPath(
            (std::string("//server1/root/compat:Compat_Volume.Name=\"") + name + "\",SystemName=\"S1\"")
                .c_str());
    }

    static void* module;
    static CreateProviderFunction createProvider;

    CIMOMHandle cimom;
    std::shared_ptr<zda_test::RecordingCIMOMBackend> backend =
        std::make_shared<zda_test::RecordingCIMOMBackend>();
    std::vector<CIMProvider*> created;
};

void* CompatModuleTest::module = nullptr;
CreateProviderFunction CompatModuleTest::createProvider = nullptr;

}  // namespace

TEST_F(CompatModuleTest, CreatesProvidersByNameWithTheirInterfaces)
{
    EXPECT_EQ(nullptr, createProvider("No_SuchProvider"));

    CIMProvider* volumes = load("compat_volumeprovider");
    ASSERT_NE(nullptr, volumes) << "names compare without regard to case";
    EXPECT_NE(nullptr, dynamic_cast<CIMInstanceProvider*>(volumes));
    EXPECT_NE(nullptr, dynamic_cast<CIMMethodProvider*>(volumes));
    EXPECT_EQ(nullptr, dynamic_cast<CIMAssociationProvider*>(volumes));

    CIMProvider* members = load("Compat_MemberOfGroupProvider");
    ASSERT_NE(nullptr, members);
    EXPECT_NE(nullptr, dynamic_cast<CIMAssociationProvider*>(members));
    EXPECT_EQ(nullptr, dynamic_cast<CIMMethodProvider*>(members));
}

TEST_F(CompatModuleTest, InstanceOperationsDeliverThroughTheHandlers)
{
    auto* provider = dynamic_cast<CIMInstanceProvider*>(load("Compat_VolumeProvider"));
    ASSERT_NE(nullptr, provider);
    const OperationContext context = request();
    const CIMObjectPath classPath("//server1/root/compat:Compat_Volume");

    RecordingResponseHandler names;
    provider->enumerateInstanceNames(context, classPath, names);
    EXPECT_EQ("processing deliver(path) deliver(path) complete", names.sequence());
    EXPECT_TRUE(names.objectPaths()[1].identical(volume("vol2")));

    RecordingResponseHandler one;
    provider->getInstance(context, volume("vol1"), false, false, CIMPropertyList(), one);
    ASSERT_EQ("processing deliver(instance) complete", one.sequence());
    EXPECT_TRUE(one.instances()[0].getPath().identical(volume("vol1")));

    Array<CIMName> nameOnly;
    nameOnly.append("Name");
    RecordingResponseHandler filtered;
    provider->enumerateInstances(context, classPath, false, false, CIMPropertyList(nameOnly), filtered);
    ASSERT_EQ(2u, filtered.instances().size());
    for (const CIMInstance& each : filtered.instances())
        EXPECT_EQ(1u, each.getPropertyCount());

    RecordingResponseHandler unused;
    CIMException missing = thrownBy(
        [&] { provider->getInstance(context, volume("vol9"), false, false, CIMPropertyList(), unused); });
    EXPECT_EQ(CIM_ERR_NOT_FOUND, missing.getCode());
    EXPECT_EQ("", unused.sequence());
}

TEST_F(CompatModuleTest, MethodsDeliverParametersReturnValueAndErrors)
{
    auto* provider = dynamic_cast<CIMMethodProvider*>(load("Compat_VolumeProvider"));
    ASSERT_NE(nullptr, provider);
    const OperationContext context = request();

    RecordingResponseHandler describe;
    provider->invokeMethod(context, volume("vol1"), "Describe", Array<CIMParamValue>(), describe);
    EXPECT_EQ("processing deliverParamValue deliverParamValue deliver(value) complete", describe.sequence());
    CIMValue embedded = describe.paramValues()[0].getValue();
    ASSERT_EQ(CIMTYPE_INSTANCE, embedded.getType());
    CIMInstance volumeInstance;
    embedded.get(volumeInstance);
    EXPECT_EQ(
        CIMValue(String("vol1")), volumeInstance.getProperty(volumeInstance.findProperty("Name")).getValue());
    EXPECT_EQ(CIMValue(String("alice")), describe.paramValues()[1].getValue());

    // A failed method with a text travels as its return number.
    RecordingResponseHandler rename;
    CIMException failed = thrownBy(
        [&] { provider->invokeMethod(context, volume("vol1"), "Rename", Array<CIMParamValue>(), rename); });
    EXPECT_EQ(CIMStatusCode(5), failed.getCode());
    EXPECT_EQ(String("Invalid number of parameters"), failed.getMessage());
    EXPECT_EQ("", rename.sequence());

    RecordingResponseHandler refuse;
    try
    {
        provider->invokeMethod(context, volume("vol1"), "Refuse", Array<CIMParamValue>(), refuse);
        ADD_FAILURE() << "no exception";
    }
    catch (const TraceableCIMException& e)
    {
        EXPECT_EQ(CIM_ERR_ACCESS_DENIED, e.getCode());
        EXPECT_EQ(String("Insufficient privilege for the user"), e.getMessage());
        EXPECT_NE(std::string::npos, text(e.getFile()).find("CompatProviders.cpp"));
        EXPECT_GT(e.getLine(), 0u);
    }
}

TEST_F(CompatModuleTest, AssociationsUseReferenceKeys)
{
    auto* provider = dynamic_cast<CIMAssociationProvider*>(load("Compat_MemberOfGroupProvider"));
    ASSERT_NE(nullptr, provider);
    const OperationContext context = request();
    const CIMObjectPath group("//server1/root/compat:Compat_Group.InstanceID=\"S1:group1\"");

    RecordingResponseHandler referenceNames;
    provider->referenceNames(context, volume("vol1"), CIMName(), "Member", referenceNames);
    ASSERT_EQ(1u, referenceNames.objectPaths().size());
    const CIMObjectPath association = referenceNames.objectPaths()[0];
    Array<CIMKeyBinding> keys = association.getKeyBindings();
    ASSERT_EQ(2u, keys.size());
    EXPECT_EQ(CIMKeyBinding::REFERENCE, keys[0].getType());
    EXPECT_TRUE(CIMObjectPath(keys[1].getValue()).identical(volume("vol1")));

    RecordingResponseHandler associators;
    provider->associators(context, group, CIMName(), CIMName(), String::EMPTY, String::EMPTY, false, false,
        CIMPropertyList(), associators);
    ASSERT_EQ(1u, associators.objects().size());
    EXPECT_TRUE(associators.objects()[0].getPath().identical(volume("vol1")));

    RecordingResponseHandler references;
    provider->references(
        context, group, CIMName(), String::EMPTY, false, false, CIMPropertyList(), references);
    ASSERT_EQ(1u, references.objects().size());
    CIMObject reference = references.objects()[0];
    EXPECT_TRUE(reference.isInstance());
    EXPECT_EQ(
        CIMTYPE_REFERENCE, reference.getProperty(reference.findProperty("Member")).getValue().getType());
}
