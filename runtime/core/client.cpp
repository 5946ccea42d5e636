#include "runtime/core/client.h"

namespace core {
namespace {

constinit ir::client_events registered;

}  // namespace

void start_client(int argc, const char* argv[]) {
  constexpr client_id_t kOnlyClient = 0;
  dr_client_main(kOnlyClient, argc, argv);
  registered = ir::events;
}

const ir::client_events& client_events() { return registered; }

}  // namespace core
