// Representations behind the object-model handles (qualifiers, properties,
// parameters, methods, classes/instances, parameter values) and the helpers
// the handle classes share. Private to the Common library.
//
// Every representation is reference counted with an atomic counter: handles
// on different threads may copy and drop the same representation at once.
// A representation starts with a count of one, owned by the handle that
// created it.
#ifndef Pegasus_src_Common_ObjectRep_h
#define Pegasus_src_Common_ObjectRep_h

#include <atomic>
#include <vector>

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>
#include <Pegasus/Common/CIMName.h>
#include <Pegasus/Common/CIMValue.h>
#include <Pegasus/Common/CIMObjectPath.h>
#include <Pegasus/Common/CIMFlavor.h>
#include <Pegasus/Common/CIMScope.h>
#include <Pegasus/Common/CIMQualifier.h>
#include <Pegasus/Common/CIMQualifierDecl.h>
#include <Pegasus/Common/CIMProperty.h>
#include <Pegasus/Common/CIMParameter.h>
#include <Pegasus/Common/CIMMethod.h>
#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMInstance.h>
#include <Pegasus/Common/CIMClass.h>
#include <Pegasus/Common/CIMParamValue.h>

PEGASUS_NAMESPACE_BEGIN

class RefCounted
{
public:
    RefCounted() : _refs(1) {}
    // A copied representation is a new object with its own single owner.
    RefCounted(const RefCounted&) : _refs(1) {}
    RefCounted& operator=(const RefCounted&) = delete;

    void addRef() noexcept { _refs.fetch_add(1, std::memory_order_relaxed); }
    // True when the caller's handle is the only one: nobody else can see
    // the representation, or start to.
    bool soleOwner() const noexcept { return _refs.load(std::memory_order_acquire) == 1; }
    // True when the caller dropped the last reference and must delete. A
    // sole owner skips the atomic update: no other handle exists that could
    // add a reference meanwhile, and locked updates are costly on hot paths.
    bool release() noexcept
    {
        return _refs.load(std::memory_order_acquire) == 1 ||
            _refs.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }

private:
    std::atomic<Uint32> _refs;
};

template <class Rep>
inline void refRep(Rep* rep) noexcept
{
    if (rep)
        rep->addRef();
}

template <class Rep>
inline void unrefRep(Rep* rep) noexcept
{
    if (rep && rep->release())
        delete rep;
}

// Replaces `target` by `source` with the counts kept right, also when both
// are the same representation.
template <class Rep>
inline void assignRep(Rep*& target, Rep* source) noexcept
{
    if (target != source)
    {
        refRep(source);
        unrefRep(target);
        target = source;
    }
}

template <class Rep>
inline Rep* checkedRep(Rep* rep)
{
    if (!rep)
        throw UninitializedObjectException();
    return rep;
}

// Gives the implementation access to the representation pointer of any
// handle class (each handle declares this struct its friend).
struct CIMHandleAccess
{
    template <class Handle>
    static auto rep(const Handle& h) -> decltype(h._rep)
    {
        return h._rep;
    }

    // A new handle sharing `rep`.
    template <class Handle, class Rep>
    static Handle make(Rep* rep)
    {
        Handle h;
        assignRep(h._rep, rep);
        return h;
    }

    // A new handle taking over the caller's reference to `rep`.
    template <class Handle, class Rep>
    static Handle adopt(Rep* rep)
    {
        Handle h;
        h._rep = rep;
        return h;
    }
};

// Defines the members every handle class has in the same form: default
// (uninitialized) construction, sharing copy and assignment, moves that
// leave the source uninitialized, release on destruction,
// isUninitialized().
#define ZDA_DEFINE_HANDLE_LIFECYCLE(Handle)                                                                  \
    Handle::Handle() : _rep(nullptr) {}                                                                      \
    Handle::Handle(const Handle& x) : _rep(x._rep)                                                           \
    {                                                                                                        \
        refRep(_rep);                                                                                        \
    }                                                                                                        \
    Handle::Handle(Handle&& x) noexcept : _rep(x._rep)                                                       \
    {                                                                                                        \
        x._rep = nullptr;                                                                                    \
    }                                                                                                        \
    Handle::~Handle()                                                                                        \
    {                                                                                                        \
        unrefRep(_rep);                                                                                      \
    }                                                                                                        \
    Handle& Handle::operator=(const Handle& x)                                                               \
    {                                                                                                        \
        assignRep(_rep, x._rep);                                                                             \
        return *this;                                                                                        \
    }                                                                                                        \
    Handle& Handle::operator=(Handle&& x) noexcept                                                           \
    {                                                                                                        \
        if (this != &x)                                                                                      \
        {                                                                                                    \
            unrefRep(_rep);                                                                                  \
            _rep = x._rep;                                                                                   \
            x._rep = nullptr;                                                                                \
        }                                                                                                    \
        return *this;                                                                                        \
    }                                                                                                        \
    Boolean Handle::isUninitialized() const                                                                  \
    {                                                                                                        \
        return _rep == nullptr;                                                                              \
    }

// Counts how many elements (objects, methods) hold a member, so that the
// member refuses to be renamed while a container looks it up by name.
class OwnedMember : public RefCounted
{
public:
    void addOwner() noexcept { _owners.fetch_add(1, std::memory_order_relaxed); }
    void dropOwner() noexcept { _owners.fetch_sub(1, std::memory_order_relaxed); }
    bool isOwned() const noexcept { return _owners.load(std::memory_order_relaxed) != 0; }

protected:
    OwnedMember() : _owners(0) {}
    OwnedMember(const OwnedMember& x) : RefCounted(x), _owners(0) {}

private:
    std::atomic<Uint32> _owners;
};

// An ordered list of named members (qualifiers, properties, parameters,
// methods) held by handle, with names unique ignoring case. The holder marks
// each member owned while it is in the list.
template <class Handle>
class MemberList
{
public:
    MemberList() = default;
    MemberList(const MemberList&) = delete;
    MemberList& operator=(const MemberList&) = delete;
    ~MemberList() { clear(); }

    // `what` names the kind of member in the AlreadyExistsException text,
    // e.g. `property "b"`.
    void add(const Handle& x, const char* what)
    {
        auto* rep = CIMHandleAccess::rep(x);
        if (!rep)
            throw UninitializedObjectException();
        if (find(rep->name) != PEG_NOT_FOUND)
        {
            String text(what);
            text.append(" \"");
            text.append(rep->name.getString());
            text.append("\"");
            throw AlreadyExistsException(text);
        }
        if (_items.empty())
        {
            _items.reserve(8);
            _signatures.reserve(8);
        }
        _items.push_back(x);
        _signatures.push_back(signature(rep->name));
        rep->addOwner();
    }

    Uint32 find(const CIMName& name) const
    {
        const Uint32 wanted = signature(name);
        for (size_t i = 0; i < _items.size(); ++i)
        {
            if (_signatures[i] == wanted && CIMHandleAccess::rep(_items[i])->name.equal(name))
                return Uint32(i);
        }
        return PEG_NOT_FOUND;
    }

    const Handle& at(Uint32 index) const
    {
        if (index >= _items.size())
            throw IndexOutOfBoundsException();
        return _items[index];
    }

    void remove(Uint32 index)
    {
        if (index >= _items.size())
            throw IndexOutOfBoundsException();
        CIMHandleAccess::rep(_items[index])->dropOwner();
        _items.erase(_items.begin() + index);
        _signatures.erase(_signatures.begin() + index);
    }

    void clear()
    {
        // A member only this list holds goes with it: its owner count no
        // longer matters, and skipping the locked update saves time when
        // large answers are released.
        for (const Handle& h : _items)
        {
            auto* rep = CIMHandleAccess::rep(h);
            if (!rep->soleOwner())
                rep->dropOwner();
        }
        _items.clear();
        _signatures.clear();
    }

    Uint32 size() const { return Uint32(_items.size()); }

    // Deep copies of every member, in order.
    void cloneFrom(const MemberList& x)
    {
        clear();
        for (const Handle& h : x._items)
            add(h.clone(), "");
    }

    template <class ConstHandle>
    bool identical(const MemberList& x) const
    {
        if (_items.size() != x._items.size())
            return false;
        for (size_t i = 0; i < _items.size(); ++i)
        {
            if (!_items[i].identical(ConstHandle(x._items[i])))
                return false;
        }
        return true;
    }

private:
    // The length and the case-folded last unit of a name: names that
    // differ there cannot be equal, so most are told apart without
    // comparing their text. Members cannot be renamed while listed, so
    // the signatures stay true.
    static Uint32 signature(const CIMName& name)
    {
        const String& text = name.getString();
        const Uint32 n = text.size();
        Uint32 last = n ? Uint16(text.getChar16Data()[n - 1]) : 0;
        if (last >= 'A' && last <= 'Z')
            last += 'a' - 'A';
        return (n << 16) ^ last;
    }

    std::vector<Handle> _items;
    std::vector<Uint32> _signatures;  // one per item
};

class CIMQualifierRep : public OwnedMember
{
public:
    CIMName name;
    CIMValue value;
    CIMFlavor flavor;
    Boolean propagated = false;
};

class CIMQualifierDeclRep : public RefCounted
{
public:
    CIMName name;
    CIMValue value;
    CIMScope scope;
    CIMFlavor flavor;
    Uint32 arraySize = 0;
};

class CIMPropertyRep : public OwnedMember
{
public:
    CIMPropertyRep() = default;
    CIMPropertyRep(const CIMPropertyRep& x);

    CIMName name;
    CIMValue value;
    Uint32 arraySize = 0;
    CIMName referenceClassName;
    CIMName classOrigin;
    Boolean propagated = false;
    MemberList<CIMQualifier> qualifiers;
};

class CIMParameterRep : public OwnedMember
{
public:
    CIMParameterRep() = default;
    CIMParameterRep(const CIMParameterRep& x);

    CIMName name;
    CIMType type = CIMTYPE_BOOLEAN;
    Boolean isArray = false;
    Uint32 arraySize = 0;
    CIMName referenceClassName;
    MemberList<CIMQualifier> qualifiers;
};

class CIMMethodRep : public OwnedMember
{
public:
    CIMMethodRep() = default;
    CIMMethodRep(const CIMMethodRep& x);

    CIMName name;
    CIMType type = CIMTYPE_BOOLEAN;
    CIMName classOrigin;
    Boolean propagated = false;
    MemberList<CIMQualifier> qualifiers;
    MemberList<CIMParameter> parameters;
};

// One representation serves classes and instances, so that CIMObject can
// share either; the class-only members stay empty for instances.
class CIMObjectRep : public RefCounted
{
public:
    enum Kind
    {
        INSTANCE,
        CLASS
    };

    CIMObjectRep(Kind k, const CIMName& className);
    CIMObjectRep(const CIMObjectRep& x);

    Kind kind;
    CIMName className;
    CIMObjectPath path;
    MemberList<CIMQualifier> qualifiers;
    MemberList<CIMProperty> properties;
    // Classes only.
    CIMName superClassName;
    MemberList<CIMMethod> methods;
};

class CIMParamValueRep : public RefCounted
{
public:
    String name;
    CIMValue value;
    Boolean isTyped = true;
};

// True when the element has the named boolean qualifier with value true.
Boolean hasTrueQualifier(const MemberList<CIMQualifier>& qualifiers, const char* name);

// Operations shared by the object handles (CIMObject.cpp). Each takes an
// initialized representation.
void objectSetPath(CIMObjectRep* rep, const CIMObjectPath& path);
void objectFilter(CIMObjectRep* rep, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList);
Boolean objectIdentical(const CIMObjectRep* a, const CIMObjectRep* b);
String objectToString(const CIMObjectRep* rep);
// For the conversions from CIMObject: a null representation passes (it
// gives an uninitialized handle); one of the other kind throws
// DynamicCastFailedException.
CIMObjectRep* requireKind(CIMObjectRep* rep, CIMObjectRep::Kind kind);
// buildInstance and buildPath, shared by the plain and const handles.
CIMInstance classBuildInstance(const CIMObjectRep* rep, Boolean includeQualifiers, Boolean includeClassOrigin,
    const CIMPropertyList& propertyList);
CIMObjectPath instanceBuildPath(const CIMObjectRep* rep, const CIMObjectRep* classRep);
void classKeyNames(const CIMObjectRep* rep, Array<CIMName>& keyNames);

PEGASUS_NAMESPACE_END

#endif
