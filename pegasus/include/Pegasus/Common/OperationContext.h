// OperationContext: the per-request data a host hands to a provider, held as
// a set of named containers; and the containers that travel in it.
//
// A context owns clones of the containers inserted into it, at most one per
// name. Copying a context clones every container, so copies are independent.
// A context is not synchronised: share it between threads only for reading.
#ifndef Pegasus_OperationContext_h
#define Pegasus_OperationContext_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>
#include <Pegasus/Common/String.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/AcceptLanguageList.h>
#include <Pegasus/Common/ContentLanguageList.h>

PEGASUS_NAMESPACE_BEGIN

class OperationContextRep;

class PEGASUS_COMMON_LINKAGE OperationContext
{
public:
    // One piece of request data. getName() identifies the kind of container
    // and is the key the context stores it under; clone() returns a new heap
    // copy that the caller owns and releases with destroy().
    class PEGASUS_COMMON_LINKAGE Container
    {
    public:
        virtual ~Container();
        virtual String getName() const = 0;
        virtual Container* clone() const = 0;
        virtual void destroy() = 0;
    };

    OperationContext();
    OperationContext(const OperationContext& context);
    virtual ~OperationContext();
    OperationContext& operator=(const OperationContext& context);

    // Removes every container.
    void clear();

    // The container stored under containerName (compared exactly). The
    // reference stays valid until that container is replaced or removed or
    // the context is cleared, assigned or destroyed. None: throws Exception.
    const Container& get(const String& containerName) const;

    Boolean contains(const String& containerName) const;

    // Replaces the stored container of the same name with a clone of
    // container. None of that name: throws Exception.
    void set(const Container& container);

    // Stores a clone of container. One of that name already there: throws
    // Exception and leaves the context unchanged.
    void insert(const Container& container);

    // Removes the container stored under containerName. None: throws Exception.
    void remove(const String& containerName);

protected:
    OperationContextRep* _rep;
};

// The identity of the client a request comes from: the authenticated user
// name and, as an extension of this SDK, the client's network address.
class PEGASUS_COMMON_LINKAGE IdentityContainer : virtual public OperationContext::Container
{
public:
    static const String NAME;  // "IdentityContainer"

    // Copies the identity out of a container found in a context. A container
    // of another kind throws DynamicCastFailedException.
    IdentityContainer(const OperationContext::Container& container);
    IdentityContainer(const IdentityContainer& container);
    IdentityContainer(const String& userName);
    // The address is the client's IP address as text ("192.0.2.7", "::1"),
    // empty when the request did not come over a network or a host does not
    // know it.
    IdentityContainer(const String& userName, const String& ipAddress);
    virtual ~IdentityContainer();
    IdentityContainer& operator=(const IdentityContainer& container);

    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();

    // The authenticated user of the request; may be empty.
    String getUserName() const;

    // The client's IP address as text; empty when unknown.
    String getIpAddress() const;

private:
    IdentityContainer();

    String _userName;
    String _ipAddress;
};

// The role the authenticated user acts in, when the host knows one.
class PEGASUS_COMMON_LINKAGE UserRoleContainer : virtual public OperationContext::Container
{
public:
    static const String NAME;  // "UserRoleContainer"

    // A container of another kind throws DynamicCastFailedException.
    UserRoleContainer(const OperationContext::Container& container);
    UserRoleContainer(const UserRoleContainer& container);
    UserRoleContainer(const String& userRole);
    virtual ~UserRoleContainer();
    UserRoleContainer& operator=(const UserRoleContainer& container);

    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();

    String getUserRole() const;

private:
    UserRoleContainer();

    String _userRole;
};

// The languages the client accepts in responses, in order of preference.
class PEGASUS_COMMON_LINKAGE AcceptLanguageListContainer : virtual public OperationContext::Container
{
public:
    static const String NAME;  // "AcceptLanguageListContainer"

    // A container of another kind throws DynamicCastFailedException.
    AcceptLanguageListContainer(const OperationContext::Container& container);
    AcceptLanguageListContainer(const AcceptLanguageListContainer& container);
    AcceptLanguageListContainer(const AcceptLanguageList& languages);
    virtual ~AcceptLanguageListContainer();
    AcceptLanguageListContainer& operator=(const AcceptLanguageListContainer& container);

    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();

    AcceptLanguageList getLanguages() const;

private:
    AcceptLanguageListContainer();

    AcceptLanguageList _languages;
};

// The languages of the content of a request or response.
class PEGASUS_COMMON_LINKAGE ContentLanguageListContainer : virtual public OperationContext::Container
{
public:
    static const String NAME;  // "ContentLanguageListContainer"

    // A container of another kind throws DynamicCastFailedException.
    ContentLanguageListContainer(const OperationContext::Container& container);
    ContentLanguageListContainer(const ContentLanguageListContainer& container);
    ContentLanguageListContainer(const ContentLanguageList& languages);
    virtual ~ContentLanguageListContainer();
    ContentLanguageListContainer& operator=(const ContentLanguageListContainer& container);

    virtual String getName() const;
    virtual OperationContext::Container* clone() const;
    virtual void destroy();

    ContentLanguageList getLanguages() const;

private:
    ContentLanguageListContainer();

    ContentLanguageList _languages;
};

PEGASUS_NAMESPACE_END

#endif
