// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_RAW_SOCKET_H
#define KORVO_TESTS_PLATFORM_RAW_SOCKET_H

#include <string>

/// One end of a connection that does not go through the core: for peers that misbehave.
class RawSocket {
  public:
    explicit RawSocket(int descriptor) : descriptor_(descriptor) {}
    ~RawSocket();
    RawSocket(RawSocket &&other) noexcept : descriptor_(other.descriptor_) { other.descriptor_ = -1; }
    RawSocket(RawSocket const &) = delete;
    RawSocket &operator=(RawSocket const &) = delete;

    /// Connects to the socket file; isOpen() tells whether that worked.
    static RawSocket connect(std::string const &path);
    /// Listens under a new socket file.
    static RawSocket listen(std::string const &path);
    RawSocket accept() const;

    bool isOpen() const { return descriptor_ >= 0; }
    bool send(std::string const &bytes) const;
    /// Waits for some bytes; an empty text at the end of the stream, or when nothing comes for long.
    std::string receive() const;
    /// Whether bytes or the end of the stream come within so many milliseconds.
    bool comes(int limit) const;
    /// Whether the peer has closed the connection, or does so soon; what comes before is passed over.
    bool ends() const;

  private:
    int descriptor_;
};

#endif
