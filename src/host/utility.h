// IAcadUtility, headless: interactive requests answer from the document's
// queue of scripted input (Document::QueueInput); with nothing queued a
// request fails as the user's Escape does. Prompt writes to the command
// line log.
#ifndef TOVIK_HOST_UTILITY_H_
#define TOVIK_HOST_UTILITY_H_

#include "frame/member_table.h"

namespace tovik::host {

class Document;

class Utility : public DispatchObject<Utility> {
 public:
  explicit Utility(Document* doc) : doc_(doc) {}
  std::string_view TypeName() const override { return "IAcadUtility"; }
  static const MemberTable<Utility>& Members();
  Document* document() const { return doc_; }

 private:
  Document* doc_;
};

}  // namespace tovik::host

#endif  // TOVIK_HOST_UTILITY_H_
