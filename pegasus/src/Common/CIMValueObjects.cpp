// The CIMValue members that hold objects and instances.
#include "CIMValueRep.h"

#include <Pegasus/Common/CIMObject.h>
#include <Pegasus/Common/CIMInstance.h>

PEGASUS_NAMESPACE_BEGIN

namespace
{

template <class T>
struct ObjectType;
template <>
struct ObjectType<CIMObject>
{
    static const CIMType code = CIMTYPE_OBJECT;
};
template <>
struct ObjectType<CIMInstance>
{
    static const CIMType code = CIMTYPE_INSTANCE;
};

template <class T>
T cloneOf(const T& x)
{
    if (x.isUninitialized())
        throw UninitializedObjectException();
    return x.clone();
}

String objectText(const CIMObject& x)
{
    return x.toString();
}
String objectText(const CIMInstance& x)
{
    return CIMObject(x).toString();
}

// One object or instance, owned by the value (a clone of the caller's).
template <class T>
struct ObjectScalar : CIMValueObjects
{
    explicit ObjectScalar(const T& x) : object(cloneOf(x)) {}
    Uint32 size() const override { return 0; }
    bool equal(const CIMValueObjects& x) const override
    {
        const ObjectScalar* other = dynamic_cast<const ObjectScalar*>(&x);
        return other && object.identical(other->object);
    }
    String toString() const override { return objectText(object); }
    T object;
};

template <class T>
struct ObjectArray : CIMValueObjects
{
    explicit ObjectArray(const Array<T>& x)
    {
        objects.reserveCapacity(x.size());
        for (Uint32 i = 0; i < x.size(); i++)
            objects.append(cloneOf(x[i]));
    }
    Uint32 size() const override { return objects.size(); }
    bool equal(const CIMValueObjects& x) const override
    {
        const ObjectArray* other = dynamic_cast<const ObjectArray*>(&x);
        if (!other || other->objects.size() != objects.size())
            return false;
        for (Uint32 i = 0; i < objects.size(); i++)
            if (!objects[i].identical(other->objects[i]))
                return false;
        return true;
    }
    String toString() const override
    {
        String result;
        for (Uint32 i = 0; i < objects.size(); i++)
        {
            result.append(objectText(objects[i]));
            result.append(Char16(' '));
        }
        return result;
    }
    Array<T> objects;
};

template <class T>
std::shared_ptr<const CIMValueRep> makeObject(const T& x)
{
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = ObjectType<T>::code;
    rep->isNull = false;
    rep->data = std::shared_ptr<const CIMValueObjects>(std::make_shared<ObjectScalar<T>>(x));
    return rep;
}

template <class T>
std::shared_ptr<const CIMValueRep> makeObjectArray(const Array<T>& x)
{
    auto rep = std::make_shared<CIMValueRep>();
    rep->type = ObjectType<T>::code;
    rep->isArray = true;
    rep->isNull = false;
    rep->data = std::shared_ptr<const CIMValueObjects>(std::make_shared<ObjectArray<T>>(x));
    return rep;
}

const CIMValueRep& nullBoolean()
{
    static const CIMValueRep rep;
    return rep;
}

template <class T>
void getObject(const CIMValueRep& rep, T& x)
{
    if (rep.type != ObjectType<T>::code || rep.isArray)
        throw TypeMismatchException();
    if (rep.isNull)
        return;
    const auto& holder = std::get<std::shared_ptr<const CIMValueObjects>>(rep.data);
    x = static_cast<const ObjectScalar<T>&>(*holder).object.clone();
}

template <class T>
void getObjectArray(const CIMValueRep& rep, Array<T>& x)
{
    if (rep.type != ObjectType<T>::code || !rep.isArray)
        throw TypeMismatchException();
    if (rep.isNull)
        return;
    const auto& holder = std::get<std::shared_ptr<const CIMValueObjects>>(rep.data);
    const Array<T>& stored = static_cast<const ObjectArray<T>&>(*holder).objects;
    Array<T> copies;
    copies.reserveCapacity(stored.size());
    for (Uint32 i = 0; i < stored.size(); i++)
        copies.append(stored[i].clone());
    x = copies;
}

}  // namespace

#define PEGASUS_OBJECT_VALUE_MEMBERS(T)                                                                      \
    CIMValue::CIMValue(const T& x) : _rep(makeObject(x)) {}                                                  \
    CIMValue::CIMValue(const Array<T>& x) : _rep(makeObjectArray(x)) {}                                      \
    void CIMValue::set(const T& x)                                                                           \
    {                                                                                                        \
        _rep = makeObject(x);                                                                                \
    }                                                                                                        \
    void CIMValue::set(const Array<T>& x)                                                                    \
    {                                                                                                        \
        _rep = makeObjectArray(x);                                                                           \
    }                                                                                                        \
    void CIMValue::get(T& x) const                                                                           \
    {                                                                                                        \
        getObject(_rep ? *_rep : nullBoolean(), x);                                                          \
    }                                                                                                        \
    void CIMValue::get(Array<T>& x) const                                                                    \
    {                                                                                                        \
        getObjectArray(_rep ? *_rep : nullBoolean(), x);                                                     \
    }

PEGASUS_OBJECT_VALUE_MEMBERS(CIMObject)
PEGASUS_OBJECT_VALUE_MEMBERS(CIMInstance)
#undef PEGASUS_OBJECT_VALUE_MEMBERS

PEGASUS_NAMESPACE_END
