#include "bridge.h"

namespace tovik::com {

BridgeState& Bridge() {
  static BridgeState state;
  return state;
}

}  // namespace tovik::com
