// What the test provider module tells the tests that link it: how often
// each provider was initialized and terminated, and notes the providers
// write about what they were asked and what their upcalls returned.
// Thread-safe.
#ifndef ZDA_TESTS_TEST_PROVIDER_CONTROL_H
#define ZDA_TESTS_TEST_PROVIDER_CONTROL_H

#include <string>
#include <vector>

namespace zda_test_providers
{

int initializeCount(const std::string& providerName);
int terminateCount(const std::string& providerName);

// The notes that begin with `prefix`, in the order written, e.g.
// "Test_ComponentProvider.associatorNames assoc=Test_Component result= role=Part resultRole=".
std::vector<std::string> notesStartingWith(const std::string& prefix);

// Makes Test_CycleA's and Test_CycleB's initialize wait for each other
// before each calls the other's class, so that both initializations are
// under way at once.
void setCycleRendezvous(bool on);

// Forgets counts and notes and restores the disks' data.
void reset();

}  // namespace zda_test_providers

#endif
