// The response handlers the dispatcher gives to providers. A collector
// keeps what the provider delivers; the dispatcher reads the collection when
// the provider call returns, whether or not the provider called complete().
// A forwarder hands each delivery on at once to a consumer (the dispatcher's
// per-object work and whoever receives the results), so that a long
// enumeration is never held whole in memory.
//
// Deliveries are checked as a provider expects of a CIM server: an
// uninitialized instance or object, a path without a class name, or a null
// return value is refused with CIMException(CIM_ERR_FAILED, "The object is
// not initialized."); a handler for one instance refuses a second one
// ("Too many objects delivered.") and a complete() without any ("Too few
// objects delivered."). processing() has no effect.
//
// A collector belongs to the one provider call it is made for and is used
// by the thread of that call.
#ifndef ZDA_SERVER_RESPONSE_COLLECTORS_H
#define ZDA_SERVER_RESPONSE_COLLECTORS_H

#include <Pegasus/Common/ResponseHandler.h>

#include <exception>
#include <functional>

namespace zda::server
{

// What every collector shares: whether complete() was called, and the
// context the provider set for the response.
class CollectorBase : virtual public Pegasus::ResponseHandler
{
public:
    void processing() override {}
    void complete() override { _completed = true; }
    bool completed() const { return _completed; }
    Pegasus::OperationContext responseContext() const { return getContext(); }

    // What a forwarder's consumer threw, or null. The consumer's failure is
    // the operation's failure whatever the provider did with the exception
    // (a provider may catch it, or turn it into one of its own): the
    // dispatcher rethrows it when the provider call ends.
    std::exception_ptr consumerFailure() const { return _consumerFailure; }

protected:
    // Runs the consumer for one delivery. Once the consumer has failed,
    // every later delivery fails the same way without reaching it.
    template <class Consume>
    void forward(Consume&& consume)
    {
        if (_consumerFailure)
            std::rethrow_exception(_consumerFailure);
        try
        {
            consume();
        }
        catch (...)
        {
            _consumerFailure = std::current_exception();
            throw;
        }
    }

private:
    bool _completed = false;
    std::exception_ptr _consumerFailure;
};

// modifyInstance, deleteInstance, setProperty: nothing is delivered.
class NoResultCollector : public CollectorBase
{};

class InstanceCollector : public CollectorBase, public Pegasus::InstanceResponseHandler
{
public:
    // With `single`, exactly one instance is expected (getInstance).
    explicit InstanceCollector(bool single) : _single(single) {}

    void deliver(const Pegasus::CIMInstance& instance) override;
    void deliver(const Pegasus::Array<Pegasus::CIMInstance>& instances) override;
    void complete() override;

    const Pegasus::Array<Pegasus::CIMInstance>& instances() const { return _instances; }

private:
    const bool _single;
    Pegasus::Array<Pegasus::CIMInstance> _instances;
};

class ObjectPathCollector : public CollectorBase, public Pegasus::ObjectPathResponseHandler
{
public:
    void deliver(const Pegasus::CIMObjectPath& objectPath) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObjectPath>& objectPaths) override;

    const Pegasus::Array<Pegasus::CIMObjectPath>& objectPaths() const { return _paths; }

private:
    Pegasus::Array<Pegasus::CIMObjectPath> _paths;
};

class ObjectCollector : public CollectorBase, public Pegasus::ObjectResponseHandler
{
public:
    void deliver(const Pegasus::CIMObject& object) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObject>& objects) override;

    const Pegasus::Array<Pegasus::CIMObject>& objects() const { return _objects; }

private:
    Pegasus::Array<Pegasus::CIMObject> _objects;
};

// Forwarders: each checks a delivery as the collectors do, then passes it
// to the consumer on the provider's thread, inside deliver(); an array
// delivery is passed on element by element.
class InstanceForwarder : public CollectorBase, public Pegasus::InstanceResponseHandler
{
public:
    using Consumer = std::function<void(const Pegasus::CIMInstance&)>;
    explicit InstanceForwarder(Consumer consumer) : _consumer(std::move(consumer)) {}

    void deliver(const Pegasus::CIMInstance& instance) override;
    void deliver(const Pegasus::Array<Pegasus::CIMInstance>& instances) override;

private:
    Consumer _consumer;
};

class ObjectPathForwarder : public CollectorBase, public Pegasus::ObjectPathResponseHandler
{
public:
    using Consumer = std::function<void(const Pegasus::CIMObjectPath&)>;
    explicit ObjectPathForwarder(Consumer consumer) : _consumer(std::move(consumer)) {}

    void deliver(const Pegasus::CIMObjectPath& objectPath) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObjectPath>& objectPaths) override;

private:
    Consumer _consumer;
};

class ObjectForwarder : public CollectorBase, public Pegasus::ObjectResponseHandler
{
public:
    using Consumer = std::function<void(const Pegasus::CIMObject&)>;
    explicit ObjectForwarder(Consumer consumer) : _consumer(std::move(consumer)) {}

    void deliver(const Pegasus::CIMObject& object) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObject>& objects) override;

private:
    Consumer _consumer;
};

// Output parameters in delivery order (a reference without a class becomes
// a null reference), and the return value: null until delivered; a second
// delivery replaces the first.
class MethodResultCollector : public CollectorBase, public Pegasus::MethodResultResponseHandler
{
public:
    void deliverParamValue(const Pegasus::CIMParamValue& outParamValue) override;
    void deliverParamValue(const Pegasus::Array<Pegasus::CIMParamValue>& outParamValues) override;
    void deliver(const Pegasus::CIMValue& returnValue) override;

    const Pegasus::Array<Pegasus::CIMParamValue>& outParameters() const { return _outParameters; }
    const Pegasus::CIMValue& returnValue() const { return _returnValue; }

private:
    Pegasus::Array<Pegasus::CIMParamValue> _outParameters;
    Pegasus::CIMValue _returnValue;
};

}  // namespace zda::server

#endif
