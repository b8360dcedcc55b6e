// The window of the Options dialog.
#pragma once

class QtHost;

void RegisterOptionsFace(QtHost& host);
