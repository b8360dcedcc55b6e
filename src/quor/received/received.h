// What comes over a unix socket besides bytes: descriptors, which any peer may send at any time.
//
// The end of a descriptor may take as long as its sender likes. The close of a file waits for its
// file system, which may be a program of the sender, and that of a TCP socket for its peer. The
// kernel also closes what is not received, in the one who reads the bytes or closes the socket. So
// everything is received, also before a socket is closed, and nothing that may wait is closed here.
//
// Owner    Descriptors that are received are the caller's; the others are closed.
// Errors   As of recv. Without a thread, or with very many, a descriptor stays open.
// Threads  Any.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <vector>

// Reads without waiting. `descriptors`: gets those that came with the bytes; null: they are closed.
ssize_t ReceiveAll(int socket, void* to, std::size_t size, std::vector<int>* descriptors);
// Closes a descriptor that a peer has sent. Does not wait.
void CloseReceived(int descriptor);
// Ends the connection for both sides and receives what is left. The caller closes the socket.
void EndPeer(int socket);
// A regular file in the memory in which segments of other accounts lie. Does not ask its file
// system, whose answer may take as long.
bool IsInSharedMemory(int descriptor);
