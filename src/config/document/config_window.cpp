#include "config/document/config_window.h"

#include "base/fail_with.h"
#include "base/text.h"
#include "docview/doc_template.h"

CConfigDoc* FindConfigWindow(const CMultiDocTemplate& configurations, const std::string& machine) {
  for (const auto& document : configurations.Documents()) {
    auto& config = static_cast<CConfigDoc&>(*document);
    if (CompareIgnoringCase(config.GetMachineName(), machine) == 0) return &config;
  }
  return nullptr;
}

CConfigDoc* OpenConfigWindow(CMultiDocTemplate& configurations, const std::string& machine,
                             std::string* why) {
  CDocument* const document = configurations.OpenDocumentFile(nullptr, false);
  if (!document) return nullptr;
  auto& frame = static_cast<CMDIChildWnd&>(*document->Views().front()->GetParentFrame());
  auto& config = static_cast<CConfigDoc&>(*document);
  if (!config.ConnectToMachine(machine)) {
    const std::string reason = config.WhyNotConnected();
    frame.Destroy();  // destroys the document too, whose only frame it is
    return FailWith<CConfigDoc*>(why, reason, nullptr);
  }
  configurations.InitialUpdateFrame(frame, config, true);
  return &config;
}
