// libFuzzer target over the headless host's lisp: any text typed at the
// command line must print a result or an error, never crash, hang or leak.
// A small step limit keeps loops short.
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/core/application.h"
#include "host/core/document.h"
#include "host/lisp/interpreter.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace tovik::host;
  auto app = Application::Create({.lisp = false});
  std::shared_ptr<Document> doc = app->active_document();
  lisp::Interpreter lisp;
  lisp.set_step_limit(20'000);
  lisp.Evaluate(*doc, std::string(reinterpret_cast<const char*>(data), size));
  return 0;
}
