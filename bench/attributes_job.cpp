// The job bench/attributes.sh times: opens a drawing, reads and rewrites
// the attribute tagged ID of every block reference in model space through
// the dispatch interface (AcadSpace.AttRef_Get by name, as a client calls
// it), saves the drawing and prints how many references it changed.
//   bench_attributes_job IN.dxf OUT.dxf
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "frame/conversions.h"
#include "frame/dispatch.h"
#include "frame/library_state.h"
#include "frame/zactivex_com.h"
#include "host/core/application.h"
#include "host/dxf/dxf_file.h"
#include "toolkit/acad_space.h"

int main(int argc, char** argv) {
  using namespace tovik;
  if (argc != 3) {
    std::fputs("usage: bench_attributes_job IN.dxf OUT.dxf\n", stderr);
    return 2;
  }
  auto app = host::Application::Create({.open_drawing = false});
  host::dxf::InstallDxfFileIo(*app);
  Variant link(ObjectRef(app->events()));
  GlobalInstance<ZActiveXCOM>()->InitZActiveX(link);
  ObjectRef doc = CallMethod(GetProperty(ObjectRef(app), "Documents").Object(), "Open",
                             {Variant(std::string(argv[1]))})
                      .Object();
  ObjectRef space = GlobalInstance<AcadSpace>();
  long changed = 0;
  for (const Variant& item : ForEach(GetProperty(doc, "ModelSpace").Object())) {
    if (item.Object()->TypeName() != "IAcadBlockReference") continue;
    std::array<Variant, 2> read{item, Variant("ID")};
    std::string text = CStr(CallMethodRef(space, "AttRef_Get", read));
    std::array<Variant, 3> write{item, Variant("ID"), Variant(text + "-1")};
    CallMethodRef(space, "AttRef_Get", write);
    ++changed;
  }
  CallMethod(doc, "SaveAs", {Variant(std::string(argv[2]))});
  std::printf("changed %ld references\n", changed);
  std::fflush(stdout);
  std::_Exit(0);  // the drawing is not taken apart object by object
}
