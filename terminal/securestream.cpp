#include "terminal/securestream.h"

#include <boost/beast/websocket/teardown.hpp>

namespace orvane::terminal {

SecureStream::SecureStream(next_layer_type tcp, boost::asio::ssl::context* context) : tcp_(std::move(tcp)) {
  if (context != nullptr) tls_.emplace(tcp_.socket(), *context);
}

void SecureStream::handshake(boost::asio::ssl::stream_base::handshake_type type, Completion<> done) {
  tls_->handshake(type, [done = std::move(done)](boost::system::error_code error, size_t /*bytes*/) { done(error); });
}

void SecureStream::shutdown(boost::beast::role_type role, Completion<> done) {
  using boost::beast::websocket::async_teardown;
  if (tls_) {
    return tls_->shutdown([done = std::move(done)](boost::system::error_code error, size_t /*bytes*/) { done(error); });
  }
  async_teardown(role, tcp_, std::move(done));
}

SecureStream::Completion<size_t> SecureStream::noting(Clock::time_point& time, Completion<size_t> done) {
  return [&time, done = std::move(done)](boost::system::error_code error, size_t bytes) {
    if (bytes > 0) time = Clock::now();
    done(error, bytes);
  };
}

void SecureStream::readSome(const Buffers<boost::asio::mutable_buffer>& buffers, Completion<size_t> done) {
  done = noting(lastRead_, std::move(done));
  if (tls_ && !buffers.empty()) return tls_->readSome(buffers.front(), std::move(done));
  tcp_.async_read_some(buffers, std::move(done));
}

void SecureStream::writeSome(const Buffers<boost::asio::const_buffer>& buffers, Completion<size_t> done) {
  done = noting(lastWritten_, std::move(done));
  if (tls_ && !buffers.empty()) return tls_->writeSome(buffers, std::move(done));
  tcp_.async_write_some(buffers, std::move(done));
}

}  // namespace orvane::terminal
