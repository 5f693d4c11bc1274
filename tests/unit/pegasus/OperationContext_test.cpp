// OperationContext: container storage by name, deep copies, ownership through
// clone()/destroy(), and the identity the host hands to providers.
#include <Pegasus/Common/OperationContext.h>

#include <gtest/gtest.h>

#include <functional>

PEGASUS_USING_PEGASUS;

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

TEST(IdentityContainerTest, CarriesUserAndAddressThroughAContext)
{
    OperationContext context;
    context.insert(IdentityContainer("alice", "192.0.2.7"));
    context.insert(UserRoleContainer("operator"));
    OperationContext copy(context);

    IdentityContainer identity(copy.get(IdentityContainer::NAME));
    EXPECT_EQ(String("alice"), identity.getUserName());
    EXPECT_EQ(String("192.0.2.7"), identity.getIpAddress());

    EXPECT_THROW(IdentityContainer(copy.get(UserRoleContainer::NAME)), DynamicCastFailedException);
    EXPECT_THROW(UserRoleContainer(copy.get(IdentityContainer::NAME)), DynamicCastFailedException);
    EXPECT_EQ(String("operator"), UserRoleContainer(copy.get(UserRoleContainer::NAME)).getUserRole());
}

TEST(IdentityContainerTest, LanguageContainersKeepTheirLists)
{
    AcceptLanguageList accept;
    accept.insert(LanguageTag("de"), 0.5f);
    accept.insert(LanguageTag("en-US"), 1.0f);
    ContentLanguageList content;
    content.append(LanguageTag("fr"));

    OperationContext context;
    context.insert(AcceptLanguageListContainer(accept));
    context.insert(ContentLanguageListContainer(content));
    OperationContext copy(context);

    AcceptLanguageList acceptCopy =
        AcceptLanguageListContainer(copy.get(AcceptLanguageListContainer::NAME)).getLanguages();
    EXPECT_TRUE(acceptCopy == accept);
    EXPECT_TRUE(
        ContentLanguageListContainer(copy.get(ContentLanguageListContainer::NAME)).getLanguages() == content);
    EXPECT_THROW(ContentLanguageListContainer(copy.get(AcceptLanguageListContainer::NAME)),
        DynamicCastFailedException);
}
