// A recording response handler that also asks the array simulator, at each
// delivery, whether some thread holds the array semaphore. A provider must
// never deliver while it holds it: a test reads deliveriesUnderSemaphore().
#ifndef ZDA_TESTS_SEMAPHORE_CHECKING_HANDLER_H
#define ZDA_TESTS_SEMAPHORE_CHECKING_HANDLER_H

#include "RecordingResponseHandler.h"

#include <atomic>

namespace zda_test
{

class SemaphoreCheckingHandler : public RecordingResponseHandler
{
public:
    SemaphoreCheckingHandler();

    // Deliveries (of any kind) made while the semaphore was held.
    int deliveriesUnderSemaphore() const { return _underSemaphore.load(); }
    // Deliveries seen.
    int deliveries() const { return _deliveries.load(); }

private:
    std::atomic<int> _underSemaphore{0};
    std::atomic<int> _deliveries{0};
};

}  // namespace zda_test

#endif
