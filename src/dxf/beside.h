// Two pieces of work at once: one on a helper thread, one on this thread.
#ifndef TOVIK_DXF_BESIDE_H_
#define TOVIK_DXF_BESIDE_H_

#include <exception>
#include <thread>

namespace tovik::dxf {

// Runs `helper` on a second thread while `here` runs on this one, and
// returns when both are done. An exception from either reaches the caller
// (this thread's first).
template <class Helper, class Here>
void RunBeside(Helper&& helper, Here&& here) {
  std::exception_ptr failure;
  std::thread thread([&] {
    try {
      helper();
    } catch (...) {
      failure = std::current_exception();
    }
  });
  try {
    here();
  } catch (...) {
    thread.join();
    throw;
  }
  thread.join();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace tovik::dxf

#endif  // TOVIK_DXF_BESIDE_H_
