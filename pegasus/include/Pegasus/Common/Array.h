// Array<T>: a sequence with value semantics.
//
// Copies share one representation until one of them is modified (copy on
// write); the reference count is atomic, so copies of one array may live and
// be modified in different threads. A single Array object is not safe for
// concurrent modification. References and pointers obtained from an array
// are invalidated by any later modification of it.
//
// Works for any T that is default- and copy-constructible and
// copy-assignable; the member bodies are in ArrayInter.h, included below.
#ifndef Pegasus_Array_h
#define Pegasus_Array_h

#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Linkage.h>

PEGASUS_NAMESPACE_BEGIN

// Throws IndexOutOfBoundsException (kept out of line so that this header does
// not depend on Exception.h, which itself uses Array).
PEGASUS_COMMON_LINKAGE void ArrayThrowIndexOutOfBoundsException();

template <class T>
struct ArrayRep;

template <class T>
class Array
{
public:
    typedef T value_type;

    Array();
    Array(const Array<T>& x);
    // Takes over x's elements; x is left empty.
    Array(Array<T>&& x) noexcept;
    // size default-constructed elements. Deliberately not explicit.
    Array(Uint32 size);
    Array(Uint32 size, const T& x);
    Array(const T* items, Uint32 size);
    ~Array();

    Array<T>& operator=(const Array<T>& x);
    Array<T>& operator=(Array<T>&& x) noexcept;

    void clear();
    void reserveCapacity(Uint32 capacity);
    // Appends size copies of x.
    void grow(Uint32 size, const T& x);
    void swap(Array<T>& x);

    Uint32 size() const;
    Uint32 getCapacity() const;
    const T* getData() const;

    // Out of range throws IndexOutOfBoundsException.
    T& operator[](Uint32 index);
    const T& operator[](Uint32 index) const;

    void append(const T& x);
    void append(const T* x, Uint32 size);
    void appendArray(const Array<T>& x);
    void prepend(const T& x);
    void prepend(const T* x, Uint32 size);
    // index may equal size(); beyond that throws IndexOutOfBoundsException.
    void insert(Uint32 index, const T& x);
    void insert(Uint32 index, const T* x, Uint32 size);
    void remove(Uint32 index);
    void remove(Uint32 index, Uint32 size);

private:
    void _release();
    void _unshare();
    void _insert(Uint32 index, const T* items, Uint32 n);

    ArrayRep<T>* _rep;  // null while empty and never allocated
};

PEGASUS_NAMESPACE_END

#include <Pegasus/Common/ArrayInter.h>

#endif
