// The recording handler that tests use to see what a provider did: calls
// through each handler interface land in one ordered record, array
// deliveries count item by item, and the observer runs before each call
// returns to the provider.
#include <Pegasus/Common/ResponseHandler.h>

#include <gtest/gtest.h>

#include "RecordingResponseHandler.h"

PEGASUS_USING_PEGASUS;
using zda_test::HandlerEvent;
using zda_test::RecordingResponseHandler;

TEST(RecordingResponseHandlerTest, RecordsCallsThroughEveryInterfaceInOrder)
{
    size_t seenBeforeRecording = 0;
    RecordingResponseHandler* self = nullptr;
    RecordingResponseHandler handler([&](const HandlerEvent&) {
        // The observer runs while the provider waits and before the event is stored.
        EXPECT_EQ(seenBeforeRecording++, self->events().size());
    });
    self = &handler;

    InstanceResponseHandler& instances = handler;
    ObjectPathResponseHandler& paths = handler;
    ObjectResponseHandler& objects = handler;
    MethodResultResponseHandler& results = handler;

    Array<CIMInstance> two;
    two.append(CIMInstance("A_Class"));
    two.append(CIMInstance("B_Class"));

    instances.processing();
    instances.deliver(two);
    paths.deliver(CIMObjectPath("A_Class.Name=\"x\""));
    objects.deliver(CIMInstance("C_Class"));  // through CIMObject's conversion
    results.deliverParamValue(CIMParamValue("Out", CIMValue(Uint32(1))));
    results.deliver(CIMValue(Uint32(0)));
    results.complete();
    paths.deliver(CIMObjectPath("Late_Class"));

    EXPECT_EQ("processing deliver(instance) deliver(instance) deliver(path) deliver(object) "
              "deliverParamValue deliver(value) complete deliver(path)",
        handler.sequence());
    std::vector<HandlerEvent> events = handler.events();
    EXPECT_TRUE(events[1].fromArray);
    EXPECT_FALSE(events[3].fromArray);
    EXPECT_EQ(String("B_Class"), handler.instances()[1].getClassName().getString());
    EXPECT_EQ(2u, handler.objectPaths().size()) << "deliveries after complete() are kept";
    EXPECT_TRUE(handler.completed());
    EXPECT_EQ(events.size(), seenBeforeRecording);
}

TEST(RecordingResponseHandlerTest, KeepsTheContextAProviderSets)
{
    RecordingResponseHandler handler;
    OperationContext context;
    context.insert(ContentLanguageListContainer(ContentLanguageList()));
    ResponseHandler& base = static_cast<InstanceResponseHandler&>(handler);
    base.setContext(context);
    context.clear();
    EXPECT_TRUE(handler.responseContext().contains(ContentLanguageListContainer::NAME));
}
