// The open configuration windows, and how another one comes.
//
// Owner    The template owns its documents.
// Threads  Interface thread.
#pragma once

#include <string>

#include "config/document/config_doc.h"

class CMultiDocTemplate;

// The first open configuration of this machine, whose name may be written in any case; null: none.
CConfigDoc* FindConfigWindow(const CMultiDocTemplate& configurations, const std::string& machine);
// A new window that is connected with this machine. Null when it cannot be reached: the document
// has shown its message, no window is left, and `why` has the reason.
CConfigDoc* OpenConfigWindow(CMultiDocTemplate& configurations, const std::string& machine,
                             std::string* why = nullptr);
