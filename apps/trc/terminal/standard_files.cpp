#include "terminal/standard_files.h"

#include <fcntl.h>
#include <unistd.h>

// A new file gets the lowest number. Reading from it, or writing to it, fails as before.
void TakeClosedStandardFiles() {
  for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file)
    if (fcntl(file, F_GETFD) < 0)
      static_cast<void>(open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY));
}
