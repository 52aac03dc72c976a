#include "base/kernel/statechg.h"

void StateChanged(StateChange_e, const StateChangeInfo_s *) {}
