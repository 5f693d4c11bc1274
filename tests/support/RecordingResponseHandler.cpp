#include "RecordingResponseHandler.h"

using namespace Pegasus;

namespace zda_test
{

const char* handlerEventName(HandlerEvent::Kind kind)
{
    switch (kind)
    {
    case HandlerEvent::PROCESSING: return "processing";
    case HandlerEvent::DELIVER_INSTANCE: return "deliver(instance)";
    case HandlerEvent::DELIVER_OBJECT_PATH: return "deliver(path)";
    case HandlerEvent::DELIVER_OBJECT: return "deliver(object)";
    case HandlerEvent::DELIVER_PARAM_VALUE: return "deliverParamValue";
    case HandlerEvent::DELIVER_RETURN_VALUE: return "deliver(value)";
    case HandlerEvent::COMPLETE: return "complete";
    }
    return "?";
}

void RecordingResponseHandler::record(HandlerEvent event)
{
    // The observer runs outside the lock so that it may read this handler.
    if (_observer)
        _observer(event);
    std::lock_guard<std::mutex> lock(_mutex);
    _events.push_back(std::move(event));
}

namespace
{
HandlerEvent eventOf(HandlerEvent::Kind kind)
{
    HandlerEvent event;
    event.kind = kind;
    return event;
}
}  // namespace

void RecordingResponseHandler::processing()
{
    record(eventOf(HandlerEvent::PROCESSING));
}

void RecordingResponseHandler::complete()
{
    record(eventOf(HandlerEvent::COMPLETE));
}

void RecordingResponseHandler::deliver(const CIMInstance& instance)
{
    HandlerEvent event = eventOf(HandlerEvent::DELIVER_INSTANCE);
    event.instance = instance;
    record(std::move(event));
}

void RecordingResponseHandler::deliver(const CIMObjectPath& objectPath)
{
    HandlerEvent event = eventOf(HandlerEvent::DELIVER_OBJECT_PATH);
    event.objectPath = objectPath;
    record(std::move(event));
}

void RecordingResponseHandler::deliver(const CIMObject& object)
{
    HandlerEvent event = eventOf(HandlerEvent::DELIVER_OBJECT);
    event.object = object;
    record(std::move(event));
}

void RecordingResponseHandler::deliver(const CIMValue& returnValue)
{
    HandlerEvent event = eventOf(HandlerEvent::DELIVER_RETURN_VALUE);
    event.value = returnValue;
    record(std::move(event));
}

void RecordingResponseHandler::deliverParamValue(const CIMParamValue& outParamValue)
{
    HandlerEvent event = eventOf(HandlerEvent::DELIVER_PARAM_VALUE);
    event.paramValue = outParamValue;
    record(std::move(event));
}

// An array delivery is recorded as one delivery per element.
void RecordingResponseHandler::deliver(const Array<CIMInstance>& instances)
{
    for (Uint32 i = 0; i < instances.size(); i++)
        deliver(instances[i]);
}

void RecordingResponseHandler::deliver(const Array<CIMObjectPath>& objectPaths)
{
    for (Uint32 i = 0; i < objectPaths.size(); i++)
        deliver(objectPaths[i]);
}

void RecordingResponseHandler::deliver(const Array<CIMObject>& objects)
{
    for (Uint32 i = 0; i < objects.size(); i++)
        deliver(objects[i]);
}

void RecordingResponseHandler::deliverParamValue(const Array<CIMParamValue>& outParamValues)
{
    for (Uint32 i = 0; i < outParamValues.size(); i++)
        deliverParamValue(outParamValues[i]);
}

std::vector<HandlerEvent> RecordingResponseHandler::events() const
{
    std::lock_guard<std::mutex> lock(_mutex);
    return _events;
}

std::string RecordingResponseHandler::sequence() const
{
    std::string text;
    for (const HandlerEvent& event : events())
    {
        if (!text.empty())
            text += ' ';
        text += handlerEventName(event.kind);
    }
    return text;
}

namespace
{
template <class T>
std::vector<T> collect(
    const std::vector<HandlerEvent>& events, HandlerEvent::Kind kind, T HandlerEvent::*member)
{
    std::vector<T> items;
    for (const HandlerEvent& event : events)
        if (event.kind == kind)
            items.push_back(event.*member);
    return items;
}
}  // namespace

std::vector<CIMInstance> RecordingResponseHandler::instances() const
{
    return collect(events(), HandlerEvent::DELIVER_INSTANCE, &HandlerEvent::instance);
}

std::vector<CIMObjectPath> RecordingResponseHandler::objectPaths() const
{
    return collect(events(), HandlerEvent::DELIVER_OBJECT_PATH, &HandlerEvent::objectPath);
}

std::vector<CIMObject> RecordingResponseHandler::objects() const
{
    return collect(events(), HandlerEvent::DELIVER_OBJECT, &HandlerEvent::object);
}

std::vector<CIMParamValue> RecordingResponseHandler::paramValues() const
{
    return collect(events(), HandlerEvent::DELIVER_PARAM_VALUE, &HandlerEvent::paramValue);
}

std::vector<CIMValue> RecordingResponseHandler::returnValues() const
{
    return collect(events(), HandlerEvent::DELIVER_RETURN_VALUE, &HandlerEvent::value);
}

bool RecordingResponseHandler::completed() const
{
    for (const HandlerEvent& event : events())
        if (event.kind == HandlerEvent::COMPLETE)
            return true;
    return false;
}

}  // namespace zda_test
