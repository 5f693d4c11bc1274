// OperationContext: container storage by name, deep copies, ownership through
// clone()/destroy(), and the identity the host hands to providers. Also the
// recording handler that tests use to see what a provider did: calls through
// each handler interface land in one ordered record, array deliveries count
// item by item, and the observer runs before each call returns to the
// provider.
#include <Pegasus/Common/OperationContext.h>
#include <Pegasus/Common/ResponseHandler.h>

#include <gtest/gtest.h>

#include "RecordingResponseHandler.h"

#include <functional>

PEGASUS_USING_PEGASUS;
using zda_test::HandlerEvent;
using zda_test::RecordingResponseHandler;

namespace
{

// A container that counts its live copies, so tests can see that the context
// releases every clone it made, and only through destroy().
class CountingContainer : virtual public OperationContext::Container
{
public:
    static int live;
    static int destroyed;

    explicit CountingContainer(const String& name, int value = 0) : _name(name), value(value) { ++live; }
    CountingContainer(const CountingContainer& other)
        : OperationContext::Container(), _name(other._name), value(other.value)
    {
        ++live;
    }
    ~CountingContainer() override { --live; }

    String getName() const override { return _name; }
    OperationContext::Container* clone() const override { return new CountingContainer(*this); }
    void destroy() override
    {
        ++destroyed;
        delete this;
    }

    String _name;
    int value;
};
int CountingContainer::live = 0;
int CountingContainer::destroyed = 0;

int valueIn(const OperationContext& context, const String& name)
{
    return dynamic_cast<const CountingContainer&>(context.get(name)).value;
}

void expectPlainException(const std::function<void()>& call, const char* message)
{
    try
    {
        call();
        ADD_FAILURE() << "no exception";
    }
    catch (const CIMException&)
    {
        ADD_FAILURE() << "a CIMException, expected a plain Exception";
    }
    catch (const Exception& e)
    {
        EXPECT_EQ(String(message), e.getMessage());
    }
}

}  // namespace

TEST(OperationContextTest, StoresOneContainerPerNameAndRefusesMisses)
{
    OperationContext context;
    context.insert(CountingContainer("A", 1));
    context.insert(CountingContainer("B", 2));

    EXPECT_TRUE(context.contains("A"));
    EXPECT_FALSE(context.contains("a")) << "names compare exactly";
    EXPECT_EQ(2, valueIn(context, "B"));

    expectPlainException([&] { context.insert(CountingContainer("A", 9)); }, "object already exists");
    EXPECT_EQ(1, valueIn(context, "A")) << "a refused insert leaves the old one";

    context.set(CountingContainer("A", 3));
    EXPECT_EQ(3, valueIn(context, "A"));

    context.remove("A");
    EXPECT_FALSE(context.contains("A"));
    EXPECT_TRUE(context.contains("B"));

    expectPlainException([&] { context.get("A"); }, "object not found");
    expectPlainException([&] { context.set(CountingContainer("A")); }, "object not found");
    expectPlainException([&] { context.remove("A"); }, "object not found");

    context.clear();
    EXPECT_FALSE(context.contains("B"));
}

TEST(OperationContextTest, CopiesAreIndependent)
{
    OperationContext original;
    original.insert(CountingContainer("A", 1));

    OperationContext copy(original);
    copy.set(CountingContainer("A", 2));
    copy.insert(CountingContainer("B", 3));

    OperationContext assigned;
    assigned.insert(CountingContainer("C", 4));
    assigned = original;
    original.remove("A");

    EXPECT_EQ(2, valueIn(copy, "A"));
    EXPECT_TRUE(copy.contains("B"));
    EXPECT_EQ(1, valueIn(assigned, "A"));
    EXPECT_FALSE(assigned.contains("C")) << "assignment replaces, not merges";
    EXPECT_FALSE(original.contains("B"));

    assigned = assigned;
    EXPECT_EQ(1, valueIn(assigned, "A"));
}

TEST(OperationContextTest, ReleasesEveryCloneThroughDestroy)
{
    CountingContainer::live = 0;
    CountingContainer::destroyed = 0;
    {
        CountingContainer local("A");
        OperationContext context;
        context.insert(local);
        context.set(local);
        OperationContext copy = context;
        copy.remove("A");
        copy = context;
    }
    EXPECT_EQ(0, CountingContainer::live);
    // insert, set, copy construction and assignment each made one clone.
    EXPECT_EQ(4, CountingContainer::destroyed);
}

// A request's user and address reach a provider in the server's dispatch tests.
TEST(IdentityContainerTest, ContainersAreReadOnlyAsTheirOwnKind)
{
    OperationContext context;
    context.insert(IdentityContainer("alice", "192.0.2.7"));
    context.insert(UserRoleContainer("operator"));
    OperationContext copy(context);
    EXPECT_THROW(IdentityContainer(copy.get(UserRoleContainer::NAME)), DynamicCastFailedException);
    EXPECT_THROW(UserRoleContainer(copy.get(IdentityContainer::NAME)), DynamicCastFailedException);
    EXPECT_EQ(String("operator"), UserRoleContainer(copy.get(UserRoleContainer::NAME)).getUserRole());
}

TEST(IdentityContainerTest, LanguageContainersKeepTheirLists)
{
    AcceptLanguageList accept;
    accept.insert(LanguageTag("de"), 0.5f);
    accept.insert(LanguageTag("en-US"), 1.0f);
    accept.insert(LanguageTag("fr"), 0.5f);
    ContentLanguageList content;
    content.append(LanguageTag("fr"));

    OperationContext context;
    context.insert(AcceptLanguageListContainer(accept));
    context.insert(ContentLanguageListContainer(content));
    OperationContext copy(context);

    AcceptLanguageList acceptCopy =
        AcceptLanguageListContainer(copy.get(AcceptLanguageListContainer::NAME)).getLanguages();
    EXPECT_TRUE(acceptCopy == accept);
    EXPECT_EQ(acceptCopy.getLanguageTag(0).toString(), "en-US");  // highest quality first
    EXPECT_EQ(acceptCopy.getLanguageTag(2).toString(), "fr");     // equal quality keeps order
    EXPECT_EQ(acceptCopy.getLanguageTag(0).getCountry(), "US");
    EXPECT_EQ(acceptCopy.find(LanguageTag("EN-us")), 0u);

    ContentLanguageList upperCase;
    upperCase.append(LanguageTag("FR"));
    ContentLanguageList contentCopy =
        ContentLanguageListContainer(copy.get(ContentLanguageListContainer::NAME)).getLanguages();
    EXPECT_TRUE(contentCopy == upperCase) << "tags compare ignoring case";
    EXPECT_THROW(contentCopy.getLanguageTag(1), IndexOutOfBoundsException);
    EXPECT_THROW(ContentLanguageListContainer(copy.get(AcceptLanguageListContainer::NAME)),
        DynamicCastFailedException);
}

TEST(RecordingResponseHandlerTest, RecordsCallsThroughEveryInterfaceInOrder)
{
    size_t seenBeforeRecording = 0;
    RecordingResponseHandler* self = nullptr;
    RecordingResponseHandler handler([&](const HandlerEvent&) {
        // The observer runs while the provider waits and before the event is stored.
        EXPECT_EQ(seenBeforeRecording++, self->events().size());
    });
    self = &handler;

    InstanceResponseHandler& instances = handler;
    ObjectPathResponseHandler& paths = handler;
    ObjectResponseHandler& objects = handler;
    MethodResultResponseHandler& results = handler;

    Array<CIMInstance> two;
    two.append(CIMInstance("A_Class"));
    two.append(CIMInstance("B_Class"));

    instances.processing();
    instances.deliver(two);
    paths.deliver(CIMObjectPath("A_Class.Name=\"x\""));
    objects.deliver(CIMInstance("C_Class"));  // through CIMObject's conversion
    results.deliverParamValue(CIMParamValue("Out", CIMValue(Uint32(1))));
    results.deliver(CIMValue(Uint32(0)));
    results.complete();
    paths.deliver(CIMObjectPath("Late_Class"));

    EXPECT_EQ("processing deliver(instance) deliver(instance) deliver(path) deliver(object) "
              "deliverParamValue deliver(value) complete deliver(path)",
        handler.sequence());
    EXPECT_EQ(String("B_Class"), handler.instances()[1].getClassName().getString());
    EXPECT_EQ(2u, handler.objectPaths().size()) << "deliveries after complete() are kept";
    EXPECT_TRUE(handler.completed());
    EXPECT_EQ(handler.events().size(), seenBeforeRecording);
}

TEST(RecordingResponseHandlerTest, KeepsTheContextAProviderSets)
{
    RecordingResponseHandler handler;
    OperationContext context;
    context.insert(ContentLanguageListContainer(ContentLanguageList()));
    ResponseHandler& base = static_cast<InstanceResponseHandler&>(handler);
    base.setContext(context);
    context.clear();
    EXPECT_TRUE(handler.responseContext().contains(ContentLanguageListContainer::NAME));
}
