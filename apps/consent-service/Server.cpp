#include "Server.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <httplib.h>
#include <openssl/ssl.h>
#include <sys/socket.h>

#include "Caching.h"
#include "Connection.h"
#include "Connections.h"
#include "Endpoints.h"
#include "Reply.h"
#include "RequestLog.h"

namespace TalvoConsentSDK::service {

namespace {

using httplib::Request;
using httplib::Response;

constexpr std::size_t maxPath = 2048;  // bytes; pattern matching recurses once per byte

PlatformError failure(const std::string& reason) {
  return {"Server", 1, reason};
}

// The values of a header that is given several times are joined.
std::string headerOf(const Request& request, const char* name) {
  std::string value;
  for (std::size_t i = 0; i < request.get_header_value_count(name); ++i) {
    if (i > 0) value += ", ";
    value += request.get_header_value(name, i);
  }
  return value;
}

// The Host header of the request, or nothing if JSON would have to escape it.
std::string hostOf(const Request& request) {
  const std::string host = request.get_header_value("Host");
  const bool isPlain =
      host.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-:[]") ==
      std::string::npos;
  return isPlain ? host : "";
}

bool hasBody(const Request& request) {
  return request.has_header("Transfer-Encoding") ||
         request.get_header_value<std::uint64_t>("Content-Length") > 0;
}

// Checks what the headers say about a body, before it is read. Returns 200, or the status with which to
// refuse it.
int checkBody(const Request& request) {
  const std::string encoding = request.get_header_value("Transfer-Encoding");
  if (!encoding.empty() && encoding != "chunked") return 501;
  if (request.is_multipart_form_data()) return 415;
  return request.get_header_value<std::uint64_t>("Content-Length") > maxBody ? 413 : 200;
}

// Reads and decompresses a body. Returns 200, or the status with which to refuse it.
int readBody(const Request& request, const Response& response, const httplib::ContentReader& reader,
             std::string& body) {
  if (!hasBody(request)) return 200;
  if (const int status = checkBody(request); status != 200) return status;
  Connection& connection = Connection::current();
  bool isTooLarge = false;
  connection.isAtNextRequest = reader([&](const char* data, std::size_t size) {
    isTooLarge = body.size() + size > maxBody;
    if (!isTooLarge) body.append(data, size);
    return !isTooLarge;
  });
  if (connection.isAtNextRequest) return 200;
  if (isTooLarge || connection.isTooLarge()) return 413;
  if (connection.isLate()) return 408;
  return response.status >= 400 ? response.status : 400;  // the HTTP library's own status
}

// The HTTP library's server with our connections and threads. The library's own connections accept any amount
// of input for any length of time.
template <class Base>
class BoundedServer : public Base {
 public:
  template <class... Arguments>
  BoundedServer(Connections& connections, std::chrono::milliseconds clientTimeout, Arguments... arguments)
      : Base(arguments...), connections_(connections), clientTimeout_(clientTimeout) {}

 private:
  bool process_and_close_socket(socket_t socket) override {
    SSL* session = nullptr;
    if constexpr (std::is_same_v<Base, httplib::SSLServer>) session = SSL_new(this->ssl_context());
    Connection connection(connections_, socket, session, clientTimeout_);
    if (!connection.shakeHands()) return false;
    for (bool isLast = false; !isLast;) {
      const int status = connection.readHead();
      if (status == 0) return false;
      if (status != 200) {
        connection.refuse(status);
        break;
      }
      const bool isAnswered = this->process_request(connection, false, isLast, [&](Request& request) {
        request.ranges.clear();  // a short header can request the same document a thousand times
        request.headers.erase("Accept-Encoding");  // an ETag names the bytes of an uncompressed body
        connection.isAtNextRequest = !hasBody(request);
      });
      if (!isAnswered || !connection.isAtNextRequest) break;
    }
    connection.linger();
    return true;
  }

  Connections& connections_;
  const std::chrono::milliseconds clientTimeout_;
};

class Threads : public httplib::TaskQueue {
 public:
  explicit Threads(Connections& connections) : connections_(connections) {}
  void enqueue(std::function<void()> job) override { connections_.serve(std::move(job)); }
  void shutdown() override { connections_.finish(); }

 private:
  Connections& connections_;
};

}  // namespace

struct Server::State {
  using Endpoint = Reply (Endpoints::*)(const Call&) const;

  explicit State(ServerOptions given) : options(std::move(given)) {}

  ServerOptions options;
  std::optional<Endpoints> endpoints;
  std::unique_ptr<RequestLog> log;
  Connections connections;
  std::unique_ptr<httplib::Server> http;
  std::string scheme = "http";
  std::string url;
  int port = 0;

  std::mutex lock;
  std::condition_variable stopRequested;
  bool isStopping = false;
  std::atomic<bool> hasEnded = false;

  Result<void> openFiles();
  Result<void> makeServer();
  Result<void> bind();
  void addRoutes();

  httplib::Server::Handler handler(Endpoint endpoint);
  httplib::Server::HandlerWithContentReader bodyHandler(Endpoint endpoint);
  void answer(Endpoint endpoint, const Request& request, const std::string& body, Response& response);
  Call callFrom(const Request& request, const std::string& body) const;
  void deliver(const Reply& reply, Response& response);
  bool isStopRequestedWithin(std::chrono::milliseconds time);
};

void Server::State::addRoutes() {
  http->Get("/", handler(&Endpoints::index));
  http->Get("/sites/([^/]+)/([^/]+)", handler(&Endpoints::siteFile));
  http->Get("/public/cookies/([^/]+)/configurations", handler(&Endpoints::configuration));
  http->Get("/public/cookies/([^/]+)", handler(&Endpoints::services));
  http->Get("/public/banner-customization/([^/]+)", handler(&Endpoints::customization));
  http->Post("/public/cookie-consent/([^/]+)", bodyHandler(&Endpoints::createConsent));
  http->Put("/public/cookie-consent/([^/]+)", bodyHandler(&Endpoints::updateConsent));
  http->Get("/public/cookie-consent/([^/]+)/identified/(.+)", handler(&Endpoints::identifiedConsent));
  http->Post("/public/consent", bodyHandler(&Endpoints::submitTopics));

  const std::string anything = "[^]*";
  http->Get(anything, handler(nullptr));
  http->Post(anything, bodyHandler(nullptr));
  http->Put(anything, bodyHandler(nullptr));
  http->Patch(anything, bodyHandler(nullptr));
  http->Delete(anything, bodyHandler(nullptr));
  http->Delete(anything, handler(nullptr));  // for requests without a body
  http->Options(anything, handler(nullptr));
}

// A null endpoint stands for requests that match no endpoint.
httplib::Server::Handler Server::State::handler(Endpoint endpoint) {
  return [this, endpoint](const Request& request, Response& response) {
    answer(endpoint, request, "", response);
  };
}

httplib::Server::HandlerWithContentReader Server::State::bodyHandler(Endpoint endpoint) {
  return [this, endpoint](const Request& request, Response& response, const httplib::ContentReader& reader) {
    std::string body;
    const int status = readBody(request, response, reader, body);
    if (status == 200) {
      answer(endpoint, request, body, response);
    } else {
      deliver(errorReply(status, "the body was refused"), response);
    }
  };
}

void Server::State::answer(Endpoint endpoint, const Request& request, const std::string& body,
                           Response& response) {
  const auto trueReply = [&] {
    if (endpoint) return ((*endpoints).*endpoint)(callFrom(request, body));
    return errorReply(404, "no such endpoint: " + request.method + " " + request.path);
  };
  const Fault* fault = findFault(options.faults, request.method + " " + request.target);
  const Reply reply =
      fault ? fault->reply(trueReply) : validated(trueReply(), headerOf(request, "If-None-Match"));
  if (options.delay.count() > 0) isStopRequestedWithin(options.delay);

  RequestLogEntry entry;
  entry.method = request.method;
  entry.target = request.target;
  entry.clientName = request.get_header_value("X-Client-Name");
  entry.contentType = request.get_header_value("Content-Type");
  entry.body = body;
  if (fault) entry.fault = fault->kind();
  entry.status = reply.visibleStatus();
  log->write(entry);
  deliver(reply, response);
}

Call Server::State::callFrom(const Request& request, const std::string& body) const {
  Call call;
  if (request.matches.size() > 1) call.site = request.matches[1];
  if (request.matches.size() > 2) call.rest = request.matches[2];
  call.language = request.get_param_value("lng");
  call.body = body;
  const std::string host = hostOf(request);
  const bool isForwarded = request.get_header_value("X-Forwarded-Proto") == "https";
  call.base = host.empty() ? url : (isForwarded ? "https" : scheme) + "://" + host;
  return call;
}

bool Server::State::isStopRequestedWithin(std::chrono::milliseconds time) {
  std::unique_lock guard(lock);
  return stopRequested.wait_for(guard, time, [this] { return isStopping; });
}

void Server::State::deliver(const Reply& reply, Response& response) {
  response.status = reply.status;
  if (!reply.cacheControl.empty()) response.set_header("Cache-Control", reply.cacheControl);
  if (!reply.entityTag.empty()) response.set_header("ETag", reply.entityTag);
  if (reply.delivery == Delivery::whole) {
    if (reply.status != 304) response.set_content(reply.body, reply.contentType);
  } else if (reply.delivery == Delivery::truncated) {
    const auto half = reply.body.size() / 2;
    response.set_content_provider(
        reply.body.size(), reply.contentType,
        [body = reply.body, half](std::size_t, std::size_t, httplib::DataSink& sink) {
          sink.write(body.data(), half);
          return false;
        });
  } else {
    if (reply.delivery == Delivery::stall) Connection::current().waitForEnd();
    Connection::current().abort();
  }
}

Result<void> Server::State::openFiles() {
  if (std::error_code error; !std::filesystem::is_directory(options.sites, error)) {
    return failure("not a folder of sites: " + options.sites.string());
  }
  auto store = ConsentStore::open(options.store);
  if (!store) {
    return failure("cannot open the store " + options.store + ": " + store.error().what());
  }
  auto openedLog = RequestLog::open(options.log);
  if (!openedLog) return failure(std::string("cannot open the log ") + openedLog.error().what());
  log = *std::move(openedLog);
  endpoints.emplace(Sites(options.sites), *std::move(store));
  return {};
}

Result<void> Server::State::makeServer() {
  if (options.certificate.empty()) {
    http = std::make_unique<BoundedServer<httplib::Server>>(connections, options.clientTimeout);
  } else {
    http = std::make_unique<BoundedServer<httplib::SSLServer>>(
        connections, options.clientTimeout, options.certificate.c_str(), options.privateKey.c_str());
    scheme = "https";
    if (!http->is_valid()) {
      return failure("cannot use the certificate and key: " + options.certificate + ", " +
                     options.privateKey);
    }
  }
  http->new_task_queue = [this] { return new Threads(connections); };
  http->set_tcp_nodelay(true);
  http->set_keep_alive_timeout(std::chrono::ceil<std::chrono::seconds>(options.clientTimeout).count());
  http->set_expect_100_continue_handler([](const Request& request, Response& response) {
    response.status = checkBody(request);
    return response.status == 200 ? 100 : response.status;
  });
  http->set_pre_routing_handler([](const Request& request, Response& response) {
    response.status = request.path.size() > maxPath ? 414 : request.method == "PRI" ? 501 : -1;
    using Whether = httplib::Server::HandlerResponse;
    return response.status < 0 ? Whether::Unhandled : Whether::Handled;
  });
  http->set_post_routing_handler([](const Request&, Response& response) {
    if (!Connection::current().isAtNextRequest) response.set_header("Connection", "close");
    if (response.status == 304) response.headers.erase("Content-Length");  // it would be that of the document
  });
  http->set_error_handler([](const Request&, Response& response) {  // errors of the library
    if (!response.body.empty() || response.has_header("Content-Type")) return;
    response.set_content(errorReply(response.status, "the request was refused").body, std::string(jsonType));
  });
  return {};
}

Result<void> Server::State::bind() {
  int listener = -1;
  http->set_socket_options([&listener](int socket) {
    listener = socket;
    const int yes = 1;  // unlike the library's default, fails if the port is in use
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  const bool isIPv6 = options.host.find(':') != std::string::npos;
  const std::string host = isIPv6 ? "[" + options.host + "]" : options.host;
  if (options.port == 0) {
    port = http->bind_to_any_port(options.host);
  } else {
    port = http->bind_to_port(options.host, options.port) ? options.port : -1;
  }
  http->set_socket_options(nullptr);
  if (port < 0) return failure("cannot listen on " + host + ":" + std::to_string(options.port));
  listen(listener, SOMAXCONN);  // with the library's backlog of 5, bursts of connections wait a second
  url = scheme + "://" + host + ":" + std::to_string(port);
  return {};
}

Result<std::unique_ptr<Server>> Server::open(ServerOptions options) {
  auto state = std::make_unique<State>(std::move(options));
  for (const auto step : {&State::openFiles, &State::makeServer, &State::bind}) {
    if (const auto done = (*state.*step)(); !done) return done.error();
  }
  state->addRoutes();
  return std::unique_ptr<Server>(new Server(std::move(state)));
}

Server::Server(std::unique_ptr<State> state) : state_(std::move(state)) {}

Server::~Server() = default;

const std::string& Server::url() const {
  return state_->url;
}

bool Server::run() {
  const bool wasStopped = state_->http->listen_after_bind();
  state_->hasEnded = true;
  return wasStopped;
}

void Server::stop() {
  {
    const std::scoped_lock guard(state_->lock);
    state_->isStopping = true;
  }
  state_->stopRequested.notify_all();
  while (!state_->http->is_running() && !state_->hasEnded) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  state_->http->stop();
  state_->connections.end();
}

}  // namespace TalvoConsentSDK::service
