#include <Pegasus/Common/OperationContext.h>

#include <vector>

PEGASUS_NAMESPACE_BEGIN

// The context owns each container through the container's own clone() and
// destroy(), so containers defined in a provider module are created and freed
// by that module's code.
class OperationContextRep
{
public:
    OperationContextRep() = default;
    OperationContextRep(const OperationContextRep&) = delete;
    OperationContextRep& operator=(const OperationContextRep&) = delete;
    ~OperationContextRep() { clear(); }

    void clear()
    {
        for (OperationContext::Container* c : containers)
            c->destroy();
        containers.clear();
    }

    // Index of the container named name, or containers.size().
    size_t find(const String& name) const
    {
        size_t i = 0;
        while (i < containers.size() && !String::equal(containers[i]->getName(), name))
            ++i;
        return i;
    }

    void appendClonesOf(const OperationContextRep& other)
    {
        containers.reserve(containers.size() + other.containers.size());
        for (const OperationContext::Container* c : other.containers)
            containers.push_back(c->clone());
    }

    std::vector<OperationContext::Container*> containers;
};

namespace
{
const char OBJECT_NOT_FOUND[] = "object not found";
const char OBJECT_ALREADY_EXISTS[] = "object already exists";
}  // namespace

OperationContext::Container::~Container() {}

OperationContext::OperationContext() : _rep(new OperationContextRep) {}

OperationContext::OperationContext(const OperationContext& context) : _rep(new OperationContextRep)
{
    try
    {
        _rep->appendClonesOf(*context._rep);
    }
    catch (...)
    {
        delete _rep;
        throw;
    }
}

OperationContext::~OperationContext()
{
    delete _rep;
}

OperationContext& OperationContext::operator=(const OperationContext& context)
{
    if (this != &context)
    {
        // Build the copy first so that a failing clone leaves *this intact.
        OperationContextRep* copy = new OperationContextRep;
        try
        {
            copy->appendClonesOf(*context._rep);
        }
        catch (...)
        {
            delete copy;
            throw;
        }
        delete _rep;
        _rep = copy;
    }
    return *this;
}

void OperationContext::clear()
{
    _rep->clear();
}

const OperationContext::Container& OperationContext::get(const String& containerName) const
{
    size_t i = _rep->find(containerName);
    if (i == _rep->containers.size())
        throw Exception(OBJECT_NOT_FOUND);
    return *_rep->containers[i];
}

Boolean OperationContext::contains(const String& containerName) const
{
    return _rep->find(containerName) != _rep->containers.size();
}

void OperationContext::set(const Container& container)
{
    size_t i = _rep->find(container.getName());
    if (i == _rep->containers.size())
        throw Exception(OBJECT_NOT_FOUND);
    Container* copy = container.clone();
    _rep->containers[i]->destroy();
    _rep->containers[i] = copy;
}

void OperationContext::insert(const Container& container)
{
    if (contains(container.getName()))
        throw Exception(OBJECT_ALREADY_EXISTS);
    Container* copy = container.clone();
    try
    {
        _rep->containers.push_back(copy);
    }
    catch (...)
    {
        copy->destroy();
        throw;
    }
}

void OperationContext::remove(const String& containerName)
{
    size_t i = _rep->find(containerName);
    if (i == _rep->containers.size())
        throw Exception(OBJECT_NOT_FOUND);
    _rep->containers[i]->destroy();
    _rep->containers.erase(_rep->containers.begin() + static_cast<std::ptrdiff_t>(i));
}

// IdentityContainer

const String IdentityContainer::NAME = "IdentityContainer";

IdentityContainer::IdentityContainer() {}

IdentityContainer::IdentityContainer(const OperationContext::Container& container)
{
    const IdentityContainer* identity = dynamic_cast<const IdentityContainer*>(&container);
    if (!identity)
        throw DynamicCastFailedException();
    _userName = identity->_userName;
    _ipAddress = identity->_ipAddress;
}

IdentityContainer::IdentityContainer(const IdentityContainer& container)
    : OperationContext::Container(), _userName(container._userName), _ipAddress(container._ipAddress)
{}

IdentityContainer::IdentityContainer(const String& userName) : _userName(userName) {}

IdentityContainer::IdentityContainer(const String& userName, const String& ipAddress)
    : _userName(userName), _ipAddress(ipAddress)
{}

IdentityContainer::~IdentityContainer() {}

IdentityContainer& IdentityContainer::operator=(const IdentityContainer& container)
{
    _userName = container._userName;
    _ipAddress = container._ipAddress;
    return *this;
}

String IdentityContainer::getName() const
{
    return NAME;
}

OperationContext::Container* IdentityContainer::clone() const
{
    return new IdentityContainer(*this);
}

void IdentityContainer::destroy()
{
    delete this;
}

String IdentityContainer::getUserName() const
{
    return _userName;
}

String IdentityContainer::getIpAddress() const
{
    return _ipAddress;
}

// UserRoleContainer

const String UserRoleContainer::NAME = "UserRoleContainer";

UserRoleContainer::UserRoleContainer() {}

UserRoleContainer::UserRoleContainer(const OperationContext::Container& container)
{
    const UserRoleContainer* role = dynamic_cast<const UserRoleContainer*>(&container);
    if (!role)
        throw DynamicCastFailedException();
    _userRole = role->_userRole;
}

UserRoleContainer::UserRoleContainer(const UserRoleContainer& container)
    : OperationContext::Container(), _userRole(container._userRole)
{}

UserRoleContainer::UserRoleContainer(const String& userRole) : _userRole(userRole) {}

UserRoleContainer::~UserRoleContainer() {}

UserRoleContainer& UserRoleContainer::operator=(const UserRoleContainer& container)
{
    _userRole = container._userRole;
    return *this;
}

String UserRoleContainer::getName() const
{
    return NAME;
}

OperationContext::Container* UserRoleContainer::clone() const
{
    return new UserRoleContainer(*this);
}

void UserRoleContainer::destroy()
{
    delete this;
}

String UserRoleContainer::getUserRole() const
{
    return _userRole;
}

// AcceptLanguageListContainer

const String AcceptLanguageListContainer::NAME = "AcceptLanguageListContainer";

AcceptLanguageListContainer::AcceptLanguageListContainer() {}

AcceptLanguageListContainer::AcceptLanguageListContainer(const OperationContext::Container& container)
{
    const AcceptLanguageListContainer* other = dynamic_cast<const AcceptLanguageListContainer*>(&container);
    if (!other)
        throw DynamicCastFailedException();
    _languages = other->_languages;
}

AcceptLanguageListContainer::AcceptLanguageListContainer(const AcceptLanguageListContainer& container)
    : OperationContext::Container(), _languages(container._languages)
{}

AcceptLanguageListContainer::AcceptLanguageListContainer(const AcceptLanguageList& languages)
    : _languages(languages)
{}

AcceptLanguageListContainer::~AcceptLanguageListContainer() {}

AcceptLanguageListContainer& AcceptLanguageListContainer::operator=(
    const AcceptLanguageListContainer& container)
{
    _languages = container._languages;
    return *this;
}

String AcceptLanguageListContainer::getName() const
{
    return NAME;
}

OperationContext::Container* AcceptLanguageListContainer::clone() const
{
    return new AcceptLanguageListContainer(*this);
}

void AcceptLanguageListContainer::destroy()
{
    delete this;
}

AcceptLanguageList AcceptLanguageListContainer::getLanguages() const
{
    return _languages;
}

// ContentLanguageListContainer

const String ContentLanguageListContainer::NAME = "ContentLanguageListContainer";

ContentLanguageListContainer::ContentLanguageListContainer() {}

ContentLanguageListContainer::ContentLanguageListContainer(const OperationContext::Container& container)
{
    const ContentLanguageListContainer* other = dynamic_cast<const ContentLanguageListContainer*>(&container);
    if (!other)
        throw DynamicCastFailedException();
    _languages = other->_languages;
}

ContentLanguageListContainer::ContentLanguageListContainer(const ContentLanguageListContainer& container)
    : OperationContext::Container(), _languages(container._languages)
{}

ContentLanguageListContainer::ContentLanguageListContainer(const ContentLanguageList& languages)
    : _languages(languages)
{}

ContentLanguageListContainer::~ContentLanguageListContainer() {}

ContentLanguageListContainer& ContentLanguageListContainer::operator=(
    const ContentLanguageListContainer& container)
{
    _languages = container._languages;
    return *this;
}

String ContentLanguageListContainer::getName() const
{
    return NAME;
}

OperationContext::Container* ContentLanguageListContainer::clone() const
{
    return new ContentLanguageListContainer(*this);
}

void ContentLanguageListContainer::destroy()
{
    delete this;
}

ContentLanguageList ContentLanguageListContainer::getLanguages() const
{
    return _languages;
}

PEGASUS_NAMESPACE_END
