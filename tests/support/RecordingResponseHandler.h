// RecordingResponseHandler: a response handler for tests that records every
// call a provider makes on it, in order, and keeps what was delivered.
//
// One object implements all handler interfaces, so it can be passed to any
// provider operation. It checks nothing: it shows what the provider did
// (including calls after complete(), or no complete() at all). An optional
// observer runs at each call, before the call returns to the provider, so a
// test can look at outside state at that moment (for example whether a lock
// is held). Thread-safe.
#ifndef ZDA_TESTS_RECORDING_RESPONSE_HANDLER_H
#define ZDA_TESTS_RECORDING_RESPONSE_HANDLER_H

#include <Pegasus/Common/ResponseHandler.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace zda_test
{

struct HandlerEvent
{
    enum Kind
    {
        PROCESSING,
        DELIVER_INSTANCE,
        DELIVER_OBJECT_PATH,
        DELIVER_OBJECT,
        DELIVER_PARAM_VALUE,
        DELIVER_RETURN_VALUE,
        COMPLETE
    };

    Kind kind;
    // Only the member matching kind is set.
    Pegasus::CIMInstance instance;
    Pegasus::CIMObjectPath objectPath;
    Pegasus::CIMObject object;
    Pegasus::CIMParamValue paramValue;
    Pegasus::CIMValue value;
};

// "processing", "deliver(instance)", "deliver(path)", "deliver(object)",
// "deliverParamValue", "deliver(value)", "complete".
const char* handlerEventName(HandlerEvent::Kind kind);

class RecordingResponseHandler : public Pegasus::InstanceResponseHandler,
                                 public Pegasus::ObjectPathResponseHandler,
                                 public Pegasus::ObjectResponseHandler,
                                 public Pegasus::MethodResultResponseHandler
{
public:
    typedef std::function<void(const HandlerEvent&)> Observer;

    RecordingResponseHandler() = default;
    explicit RecordingResponseHandler(Observer observer) : _observer(std::move(observer)) {}

    void processing() override;
    void complete() override;

    void deliver(const Pegasus::CIMInstance& instance) override;
    void deliver(const Pegasus::Array<Pegasus::CIMInstance>& instances) override;
    void deliver(const Pegasus::CIMObjectPath& objectPath) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObjectPath>& objectPaths) override;
    void deliver(const Pegasus::CIMObject& object) override;
    void deliver(const Pegasus::Array<Pegasus::CIMObject>& objects) override;
    void deliver(const Pegasus::CIMValue& returnValue) override;
    void deliverParamValue(const Pegasus::CIMParamValue& outParamValue) override;
    void deliverParamValue(const Pegasus::Array<Pegasus::CIMParamValue>& outParamValues) override;

    std::vector<HandlerEvent> events() const;

    // The event names joined by blanks, e.g. "processing deliver(path) complete".
    std::string sequence() const;

    // The delivered items of one kind, in delivery order.
    std::vector<Pegasus::CIMInstance> instances() const;
    std::vector<Pegasus::CIMObjectPath> objectPaths() const;
    std::vector<Pegasus::CIMObject> objects() const;
    std::vector<Pegasus::CIMParamValue> paramValues() const;
    std::vector<Pegasus::CIMValue> returnValues() const;

    bool completed() const;

    // The context the provider set with setContext() (empty if none).
    Pegasus::OperationContext responseContext() const { return getContext(); }

private:
    void record(HandlerEvent event);

    Observer _observer;
    mutable std::mutex _mutex;
    std::vector<HandlerEvent> _events;
};

}  // namespace zda_test

#endif
