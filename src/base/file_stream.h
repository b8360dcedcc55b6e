// Output streams over a file that their owner opens and closes.
//
// Errors   Sticky: after one failed write every later one fails, and OK() says so.
// Threads  One at a time.
#pragma once

#include <cstddef>
#include <vector>

class ds_File_t {
 public:
  // Writes to a descriptor that its owner opens and closes, immediately or collected in blocks.
  // Short writes are completed, interrupted ones repeated.
  class FOStream_t {
   public:
    FOStream_t() = default;
    explicit FOStream_t(int descriptor) : m_descriptor(descriptor) {}
    // Uses another descriptor and forgets an earlier error and all collected bytes; -1 for none.
    // With `blockBytes` so many bytes are written at a time, the rest at a flush.
    void Attach(int descriptor, std::size_t blockBytes = 0);
    bool Write(const void* bytes, std::size_t size);
    // Writes the collected bytes.
    bool Flush();
    bool OK() const { return !m_failed; }
    // The errno of the failed write; 0 when none has failed, or there was no file.
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

// Collects small writes. A write that does not fit writes the collected bytes first.
class ds_BufferedOutputStream_t {
 public:
  explicit ds_BufferedOutputStream_t(std::size_t size);
  // Writes the collected bytes, as Close does. Kept: the save of a document ends without Close and
  // relies on this; its caller checks the file stream's OK afterwards.
  ~ds_BufferedOutputStream_t();
  ds_BufferedOutputStream_t(const ds_BufferedOutputStream_t&) = delete;
  ds_BufferedOutputStream_t& operator=(const ds_BufferedOutputStream_t&) = delete;

  // REQUIRES: `stream` lives until this is destroyed or the next SetStream.
  void SetStream(ds_File_t::FOStream_t& stream);
  // Sets *size to the bytes taken: all, or 0 on failure.
  bool WriteBuf(const void* bytes, std::size_t* size);
  // Writes the collected bytes to the file. False if that or any earlier write failed. May be
  // called twice.
  bool Close();
  // Drops the collected bytes, after a failed write whose bytes must not reach a later file.
  void Discard();

 private:
  bool Flush();
  std::vector<unsigned char> m_buffer;
  std::size_t m_used = 0;
  ds_File_t::FOStream_t* m_stream = nullptr;
};
