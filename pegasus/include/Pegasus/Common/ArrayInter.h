// Member bodies of Array<T> (see Array.h).
#ifndef Pegasus_ArrayInter_h
#define Pegasus_ArrayInter_h

#include <Pegasus/Common/Array.h>

#include <atomic>
#include <functional>
#include <new>
#include <utility>

PEGASUS_NAMESPACE_BEGIN

template <class T>
struct ArrayRep
{
    std::atomic<Uint32> refs;
    Uint32 size;
    Uint32 capacity;
    T* items;  // raw storage for capacity elements; the first size are live

    static ArrayRep* create(Uint32 capacity)
    {
        T* items = capacity ? static_cast<T*>(::operator new(sizeof(T) * size_t(capacity))) : nullptr;
        ArrayRep* rep;
        try
        {
            rep = new ArrayRep;
        }
        catch (...)
        {
            ::operator delete(items);
            throw;
        }
        rep->refs.store(1, std::memory_order_relaxed);
        rep->size = 0;
        rep->capacity = capacity;
        rep->items = items;
        return rep;
    }

    // Destroys the live elements and frees the storage.
    static void destroy(ArrayRep* rep)
    {
        for (Uint32 i = 0; i < rep->size; i++)
            rep->items[i].~T();
        ::operator delete(rep->items);
        delete rep;
    }

    // Copy-constructs n elements from src to the end; on failure the elements
    // constructed so far stay counted in size, so destroy() cleans up.
    void appendCopies(const T* src, Uint32 n)
    {
        for (Uint32 i = 0; i < n; i++)
        {
            new (&items[size]) T(src[i]);
            size++;
        }
    }

    void appendFill(Uint32 n, const T& x)
    {
        for (Uint32 i = 0; i < n; i++)
        {
            new (&items[size]) T(x);
            size++;
        }
    }
};

template <class T>
Array<T>::Array() : _rep(nullptr)
{}

template <class T>
Array<T>::Array(const Array<T>& x) : _rep(x._rep)
{
    if (_rep)
        _rep->refs.fetch_add(1, std::memory_order_relaxed);
}

template <class T>
Array<T>::Array(Array<T>&& x) noexcept : _rep(x._rep)
{
    x._rep = nullptr;
}

template <class T>
Array<T>::Array(Uint32 size) : _rep(nullptr)
{
    if (size == 0)
        return;
    _rep = ArrayRep<T>::create(size);
    try
    {
        for (Uint32 i = 0; i < size; i++)
        {
            new (&_rep->items[i]) T();
            _rep->size++;
        }
    }
    catch (...)
    {
        ArrayRep<T>::destroy(_rep);
        throw;
    }
}

template <class T>
Array<T>::Array(Uint32 size, const T& x) : _rep(nullptr)
{
    if (size == 0)
        return;
    _rep = ArrayRep<T>::create(size);
    try
    {
        _rep->appendFill(size, x);
    }
    catch (...)
    {
        ArrayRep<T>::destroy(_rep);
        throw;
    }
}

template <class T>
Array<T>::Array(const T* items, Uint32 size) : _rep(nullptr)
{
    if (size == 0)
        return;
    _rep = ArrayRep<T>::create(size);
    try
    {
        _rep->appendCopies(items, size);
    }
    catch (...)
    {
        ArrayRep<T>::destroy(_rep);
        throw;
    }
}

template <class T>
Array<T>::~Array()
{
    _release();
}

template <class T>
void Array<T>::_release()
{
    // A sole owner frees without a locked update: nobody else can add a
    // reference meanwhile.
    if (_rep &&
        (_rep->refs.load(std::memory_order_acquire) == 1 ||
            _rep->refs.fetch_sub(1, std::memory_order_acq_rel) == 1))
        ArrayRep<T>::destroy(_rep);
    _rep = nullptr;
}

template <class T>
Array<T>& Array<T>::operator=(const Array<T>& x)
{
    if (_rep != x._rep)
    {
        ArrayRep<T>* rep = x._rep;
        if (rep)
            rep->refs.fetch_add(1, std::memory_order_relaxed);
        _release();
        _rep = rep;
    }
    return *this;
}

template <class T>
Array<T>& Array<T>::operator=(Array<T>&& x) noexcept
{
    if (this != &x)
    {
        _release();
        _rep = x._rep;
        x._rep = nullptr;
    }
    return *this;
}

// Gives this array a representation of its own before a modification.
template <class T>
void Array<T>::_unshare()
{
    if (!_rep || _rep->refs.load(std::memory_order_acquire) == 1)
        return;
    ArrayRep<T>* rep = ArrayRep<T>::create(_rep->capacity);
    try
    {
        rep->appendCopies(_rep->items, _rep->size);
    }
    catch (...)
    {
        ArrayRep<T>::destroy(rep);
        throw;
    }
    _release();
    _rep = rep;
}

template <class T>
void Array<T>::clear()
{
    _release();
}

template <class T>
void Array<T>::reserveCapacity(Uint32 capacity)
{
    if (capacity <= getCapacity() && (!_rep || _rep->refs.load() == 1))
        return;
    Uint32 keep = size();
    ArrayRep<T>* rep = ArrayRep<T>::create(capacity > keep ? capacity : keep);
    try
    {
        if (_rep)
            rep->appendCopies(_rep->items, _rep->size);
    }
    catch (...)
    {
        ArrayRep<T>::destroy(rep);
        throw;
    }
    _release();
    _rep = rep;
}

template <class T>
void Array<T>::grow(Uint32 size, const T& x)
{
    if (size == 0)
        return;
    T copy(x);  // x may live inside this array
    reserveCapacity(this->size() + size);
    _unshare();
    _rep->appendFill(size, copy);
}

template <class T>
void Array<T>::swap(Array<T>& x)
{
    std::swap(_rep, x._rep);
}

template <class T>
Uint32 Array<T>::size() const
{
    return _rep ? _rep->size : 0;
}

template <class T>
Uint32 Array<T>::getCapacity() const
{
    return _rep ? _rep->capacity : 0;
}

template <class T>
const T* Array<T>::getData() const
{
    return _rep ? _rep->items : nullptr;
}

template <class T>
T& Array<T>::operator[](Uint32 index)
{
    if (index >= size())
        ArrayThrowIndexOutOfBoundsException();
    _unshare();
    return _rep->items[index];
}

template <class T>
const T& Array<T>::operator[](Uint32 index) const
{
    if (index >= size())
        ArrayThrowIndexOutOfBoundsException();
    return _rep->items[index];
}

// Inserts n copies of items[] at index. Appending to an unshared array with
// room is done in place; everything else builds a new representation, which
// also keeps items[] valid when it points into this array.
template <class T>
void Array<T>::_insert(Uint32 index, const T* items, Uint32 n)
{
    Uint32 oldSize = size();
    if (index > oldSize)
        ArrayThrowIndexOutOfBoundsException();
    if (n == 0)
        return;
    if (n > Uint32(-1) - oldSize)
        throw std::bad_alloc();
    Uint32 newSize = oldSize + n;

    bool inPlace = _rep && index == oldSize && newSize <= _rep->capacity &&
        _rep->refs.load(std::memory_order_acquire) == 1 &&
        !(std::less_equal<const T*>()(_rep->items, items) &&
            std::less<const T*>()(items, _rep->items + oldSize));
    if (inPlace)
    {
        // Keep the array unchanged if a copy throws.
        try
        {
            _rep->appendCopies(items, n);
        }
        catch (...)
        {
            while (_rep->size > oldSize)
                _rep->items[--_rep->size].~T();
            throw;
        }
        return;
    }

    Uint32 capacity = getCapacity() * 2;
    if (capacity < newSize)
        capacity = newSize < 8 ? 8 : newSize;
    ArrayRep<T>* rep = ArrayRep<T>::create(capacity);
    try
    {
        if (_rep)
            rep->appendCopies(_rep->items, index);
        rep->appendCopies(items, n);
        if (_rep)
            rep->appendCopies(_rep->items + index, oldSize - index);
    }
    catch (...)
    {
        ArrayRep<T>::destroy(rep);
        throw;
    }
    _release();
    _rep = rep;
}

template <class T>
void Array<T>::append(const T& x)
{
    _insert(size(), &x, 1);
}

template <class T>
void Array<T>::append(const T* x, Uint32 size)
{
    _insert(this->size(), x, size);
}

template <class T>
void Array<T>::appendArray(const Array<T>& x)
{
    Array<T> keep(x);  // x may be *this
    _insert(size(), keep.getData(), keep.size());
}

template <class T>
void Array<T>::prepend(const T& x)
{
    _insert(0, &x, 1);
}

template <class T>
void Array<T>::prepend(const T* x, Uint32 size)
{
    _insert(0, x, size);
}

template <class T>
void Array<T>::insert(Uint32 index, const T& x)
{
    _insert(index, &x, 1);
}

template <class T>
void Array<T>::insert(Uint32 index, const T* x, Uint32 size)
{
    _insert(index, x, size);
}

template <class T>
void Array<T>::remove(Uint32 index)
{
    remove(index, 1);
}

template <class T>
void Array<T>::remove(Uint32 index, Uint32 size)
{
    Uint32 oldSize = this->size();
    if (index > oldSize || size > oldSize - index)
        ArrayThrowIndexOutOfBoundsException();
    if (size == 0)
        return;
    if (size == oldSize)
    {
        _release();
        return;
    }
    _unshare();
    T* items = _rep->items;
    for (Uint32 i = index + size; i < oldSize; i++)
        items[i - size] = items[i];
    for (Uint32 i = oldSize - size; i < oldSize; i++)
        items[i].~T();
    _rep->size = oldSize - size;
}

PEGASUS_NAMESPACE_END

#endif
