#include "SemaphoreCheckingHandler.h"

#include <zdasim_control.h>

namespace zda_test
{

SemaphoreCheckingHandler::SemaphoreCheckingHandler()
    : RecordingResponseHandler([this](const HandlerEvent& event) {
          if (event.kind == HandlerEvent::PROCESSING || event.kind == HandlerEvent::COMPLETE)
              return;
          zdasim_sem_ledger_t ledger;
          zdasim_sem_ledger(&ledger);
          ++_deliveries;
          if (ledger.held)
              ++_underSemaphore;
      })
{}

}  // namespace zda_test
