// Output streams over a file that their owner opens and closes.
//
// Errors   Sticky: after one failed write every later one fails, and OK() says so.
// Threads  One at a time.
#pragma once

#include <cstddef>
#include <vector>

class ds_File_t {
 public:
  // Writes to a descriptor that its owner opens and closes, at once or gathered to blocks. Short
  // writes are completed, interrupted ones repeated.
  class FOStream_t {
   public:
    FOStream_t() = default;
    explicit FOStream_t(int descriptor) : m_descriptor(descriptor) {}
    // Takes up another descriptor and forgets an earlier error and what was gathered; -1 for none.
    // With `blockBytes` so many bytes go to the file at a time, the rest when it is flushed.
    void Attach(int descriptor, std::size_t blockBytes = 0);
    bool Write(const void* bytes, std::size_t size);
    // Writes what is gathered.
    bool Flush();
    bool OK() const { return !m_failed; }
    // The errno of the write that failed; 0 when none has, or there was no file.
    int Error() const { return m_error; }

   private:
    bool WriteThrough(const char* from, std::size_t size);
    int m_descriptor = -1;
    bool m_failed = false;
    int m_error = 0;
    std::size_t m_blockBytes = 0;
    std::vector<char> m_gathered;
  };
};

// Collects small writes. A write that does not fit hands over what is held and goes on.
class ds_BufferedOutputStream_t {
 public:
  explicit ds_BufferedOutputStream_t(std::size_t size);
  // Hands over what it still holds, as Close does. Kept: the save of a document ends without Close
  // and relies on it; its caller looks at the file stream's OK afterwards.
  ~ds_BufferedOutputStream_t();
  ds_BufferedOutputStream_t(const ds_BufferedOutputStream_t&) = delete;
  ds_BufferedOutputStream_t& operator=(const ds_BufferedOutputStream_t&) = delete;

  // REQUIRES: `stream` outlives this or the next SetStream.
  void SetStream(ds_File_t::FOStream_t& stream);
  // Sets *size to the bytes taken: all, or 0 on failure.
  bool WriteBuf(const void* bytes, std::size_t* size);
  // Hands over what is held, down to the file. False if that or any write before failed. May be
  // called twice.
  bool Close();
  // Forgets what is held, after a failed write whose bytes must not reach a later file.
  void Discard();

 private:
  bool Flush();
  std::vector<unsigned char> m_buffer;
  std::size_t m_used = 0;
  ds_File_t::FOStream_t* m_stream = nullptr;
};
