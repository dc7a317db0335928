#include "terminal/tlslayer.h"

#include <algorithm>
#include <array>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/error.hpp>
#include <cerrno>
#include <new>
#include <utility>
#include <vector>

#include <openssl/bio.h>
#include <openssl/err.h>
#include <sys/socket.h>

namespace orvane::terminal {
namespace {

namespace asio = boost::asio;
using boost::system::error_code;

constexpr size_t kRecord = SSL3_RT_MAX_PLAIN_LENGTH;

// As OpenSSL's own BIO, but without SIGPIPE if the peer has gone.
int sendQuietly(BIO* bio, const char* data, int size) {
  BIO_clear_retry_flags(bio);
  const auto sent =
      static_cast<int>(send(static_cast<int>(BIO_get_fd(bio, nullptr)), data, static_cast<size_t>(size), MSG_NOSIGNAL));
  if (sent <= 0 && BIO_sock_should_retry(sent) != 0) BIO_set_retry_write(bio);
  return sent;
}

const BIO_METHOD* quietSocket() {
  static const BIO_METHOD* const kMethod = [] {
    const BIO_METHOD* plain = BIO_s_socket();
    BIO_METHOD* made = BIO_meth_new(BIO_TYPE_SOCKET, "quiet socket");
    if (made == nullptr) throw std::bad_alloc();
    BIO_meth_set_write(made, sendQuietly);
    BIO_meth_set_read(made, BIO_meth_get_read(plain));
    BIO_meth_set_ctrl(made, BIO_meth_get_ctrl(plain));
    BIO_meth_set_create(made, BIO_meth_get_create(plain));
    BIO_meth_set_destroy(made, BIO_meth_get_destroy(plain));
    return made;
  }();
  return kMethod;
}

error_code failureOf(int error, int systemError) {
  if (error == SSL_ERROR_ZERO_RETURN) return asio::error::eof;
  const unsigned long code = ERR_get_error();
  if (code == 0 && systemError != 0) return {systemError, boost::system::system_category()};
  if (code == 0 || ERR_GET_REASON(code) == SSL_R_UNEXPECTED_EOF_WHILE_READING) {
    return asio::ssl::error::stream_truncated;
  }
  return {static_cast<int>(code), asio::error::get_ssl_category()};
}

}  // namespace

TlsLayer::TlsLayer(Socket& socket, asio::ssl::context& context)
    : socket_(socket), ssl_(SSL_new(context.native_handle()), SSL_free) {
  if (ssl_ == nullptr) throw std::bad_alloc();
  SSL_set_mode(ssl_.get(),
               SSL_MODE_RELEASE_BUFFERS | SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
}

void TlsLayer::handshake(asio::ssl::stream_base::handshake_type type, Done done) {
  error_code error;
  socket_.native_non_blocking(true, error);
  BIO* bio = BIO_new(quietSocket());
  if (bio == nullptr) throw std::bad_alloc();
  BIO_set_fd(bio, socket_.native_handle(), BIO_NOCLOSE);
  SSL_set_bio(ssl_.get(), bio, bio);
  type == asio::ssl::stream_base::server ? SSL_set_accept_state(ssl_.get()) : SSL_set_connect_state(ssl_.get());
  run(SSL_do_handshake, std::move(done));
}

void TlsLayer::readSome(asio::mutable_buffer buffer, Done done) {
  run([buffer](SSL* ssl) { return SSL_read(ssl, buffer.data(), static_cast<int>(std::min(buffer.size(), kRecord))); },
      std::move(done));
}

// Short buffers, such as a frame's head and its text, share a record.
void TlsLayer::writeSome(std::span<const asio::const_buffer> buffers, Done done) {
  if (buffers.size() == 1 || buffers.front().size() >= kRecord) {
    return run(
        [first = buffers.front()](SSL* ssl) {
          return SSL_write(ssl, first.data(), static_cast<int>(std::min(first.size(), kRecord)));
        },
        std::move(done));
  }
  run(
      [copied = std::vector<asio::const_buffer>(buffers.begin(), buffers.end())](SSL* ssl) {
        std::array<char, kRecord> record;
        return SSL_write(ssl, record.data(), static_cast<int>(asio::buffer_copy(asio::buffer(record), copied)));
      },
      std::move(done));
}

void TlsLayer::shutdown(Done done) {
  run(
      [](SSL* ssl) {
        const int result = SSL_shutdown(ssl);
        return result == 0 ? SSL_shutdown(ssl) : result;  // 0: the peer's end has not come yet
      },
      std::move(done));
}

void TlsLayer::run(const Step& step, Done done) {
  const auto finish = [&](const error_code& failure, size_t bytes) {
    asio::post(socket_.get_executor(), [done = std::move(done), failure, bytes] { done(failure, bytes); });
  };
  // Its descriptor may be another connection's by now.
  if (!socket_.is_open()) return finish(asio::error::bad_descriptor, 0);
  ERR_clear_error();
  errno = 0;
  const int result = step(ssl_.get());
  const int systemError = errno;
  const int error = SSL_get_error(ssl_.get(), result);
  if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE) {
    const auto wanted = error == SSL_ERROR_WANT_READ ? Socket::wait_read : Socket::wait_write;
    return socket_.async_wait(wanted, [this, step, done = std::move(done)](const error_code& failure) mutable {
      failure ? done(failure, 0) : run(step, std::move(done));
    });
  }
  if (result > 0) return finish({}, static_cast<size_t>(result));
  finish(failureOf(error, systemError), 0);
}

}  // namespace orvane::terminal
