#include "Server.h"

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include <httplib.h>
#include <sys/socket.h>

#include "Connections.h"
#include "Endpoints.h"
#include "Reply.h"
#include "RequestLog.h"

namespace TalvoConsentSDK::service {

namespace {

using httplib::Request;
using httplib::Response;

constexpr std::size_t threadCount = 64;  // an open connection holds one, idle or not
constexpr std::size_t requestsPerConnection = 100'000;
constexpr std::size_t largestBody = 16 << 20;  // bytes
constexpr std::size_t longestPath = 2048;      // bytes; matching patterns recurses as deep

PlatformError failure(const std::string& reason) {
  return {"Server", 1, reason};
}

// The name by which the client reached the service, when it may stand in a JSON text as it is.
std::string hostOf(const Request& request) {
  const std::string host = request.get_header_value("Host");
  const bool isPlain =
      host.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789.-:[]") ==
      std::string::npos;
  return isPlain ? host : "";
}

}  // namespace

struct Server::State {
  using Endpoint = Reply (Endpoints::*)(const Call&) const;

  explicit State(ServerOptions given) : options(std::move(given)) {}

  ServerOptions options;
  std::optional<Endpoints> endpoints;
  std::unique_ptr<RequestLog> log;
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
  Call callFrom(const Request& request) const;
  void deliver(const Reply& reply, const Request& request, Response& response);
  bool isStopRequestedWithin(std::chrono::milliseconds time);
};

void Server::State::addRoutes() {
  http->Get("/", handler(&Endpoints::index));
  http->Get("/sites/([^/]+)/([^/]+)", handler(&Endpoints::siteFile));
  http->Get("/public/cookies/([^/]+)/configurations", handler(&Endpoints::configuration));
  http->Get("/public/cookies/([^/]+)", handler(&Endpoints::services));
  http->Get("/public/banner-customization/([^/]+)", handler(&Endpoints::customization));
  http->Post("/public/cookie-consent/([^/]+)", handler(&Endpoints::createConsent));
  http->Put("/public/cookie-consent/([^/]+)", handler(&Endpoints::updateConsent));
  http->Get("/public/cookie-consent/([^/]+)/identified/(.+)", handler(&Endpoints::identifiedConsent));
  http->Post("/public/consent", handler(&Endpoints::submitTopics));

  const std::string anything = "[^]*";
  http->Get(anything, handler(nullptr));
  http->Post(anything, handler(nullptr));
  http->Put(anything, handler(nullptr));
  http->Patch(anything, handler(nullptr));
  http->Delete(anything, handler(nullptr));
  http->Options(anything, handler(nullptr));
}

// No endpoint: a request that none of them is for.
httplib::Server::Handler Server::State::handler(Endpoint endpoint) {
  return [this, endpoint](const Request& request, Response& response) {
    const auto trueReply = [&] {
      if (endpoint) return ((*endpoints).*endpoint)(callFrom(request));
      return errorReply(404, "no such endpoint: " + request.method + " " + request.path);
    };
    const Fault* fault = findFault(options.faults, request.method + " " + request.target);
    const Reply reply = fault ? fault->reply(trueReply) : trueReply();
    if (options.delay.count() > 0) isStopRequestedWithin(options.delay);

    RequestLogEntry entry;
    entry.method = request.method;
    entry.target = request.target;
    entry.clientName = request.get_header_value("X-Client-Name");
    entry.contentType = request.get_header_value("Content-Type");
    entry.body = request.body;
    if (fault) entry.fault = fault->kind();
    entry.status = reply.visibleStatus();
    log->write(entry);
    deliver(reply, request, response);
  };
}

Call Server::State::callFrom(const Request& request) const {
  Call call;
  if (request.matches.size() > 1) call.site = request.matches[1];
  if (request.matches.size() > 2) call.rest = request.matches[2];
  call.language = request.get_param_value("lng");
  call.body = request.body;
  const std::string host = hostOf(request);
  call.base = host.empty() ? url : scheme + "://" + host;
  return call;
}

bool Server::State::isStopRequestedWithin(std::chrono::milliseconds time) {
  std::unique_lock guard(lock);
  return stopRequested.wait_for(guard, time, [this] { return isStopping; });
}

void Server::State::deliver(const Reply& reply, const Request& request, Response& response) {
  response.status = reply.status;
  if (reply.delivery == Delivery::whole) {
    response.set_content(reply.body, reply.contentType);
  } else if (reply.delivery == Delivery::truncated) {
    const auto half = reply.body.size() / 2;
    response.set_content_provider(
        reply.body.size(), reply.contentType,
        [body = reply.body, half](std::size_t, std::size_t, httplib::DataSink& sink) {
          sink.write(body.data(), half);
          return false;
        });
  } else {
    const int socket = connectionSocket(port, request.remote_port);
    if (reply.delivery == Delivery::stall) {
      while (!hasPeerGone(socket, 50) && !isStopRequestedWithin(std::chrono::milliseconds(0))) {
      }
    }
    shutDown(socket);
  }
}

Result<void> Server::State::openFiles() {
  if (std::error_code error; !std::filesystem::is_directory(options.sites, error)) {
    return failure("no folder of sites: " + options.sites.string());
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
    http = std::make_unique<httplib::Server>();
  } else {
    http = std::make_unique<httplib::SSLServer>(options.certificate.c_str(), options.privateKey.c_str());
    scheme = "https";
    if (!http->is_valid()) {
      return failure("no usable certificate and key: " + options.certificate + ", " + options.privateKey);
    }
  }
  http->new_task_queue = [] { return new httplib::ThreadPool(threadCount); };
  http->set_tcp_nodelay(true);
  http->set_keep_alive_max_count(requestsPerConnection);
  http->set_payload_max_length(largestBody);
  http->set_pre_routing_handler([](const Request& request, Response& response) {
    if (request.path.size() <= longestPath) return httplib::Server::HandlerResponse::Unhandled;
    response.status = 414;
    return httplib::Server::HandlerResponse::Handled;
  });
  http->set_error_handler([](const Request&, Response& response) {  // for errors of the HTTP library itself
    if (!response.body.empty() || response.has_header("Content-Type")) return;
    response.set_content(errorReply(response.status, "the request was refused").body, std::string(jsonType));
  });
  return {};
}

Result<void> Server::State::bind() {
  int listener = -1;
  http->set_socket_options([&listener](int socket) {
    listener = socket;
    const int yes = 1;  // unlike the library's default, this makes a port that is taken an error
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
  listen(listener, SOMAXCONN);  // the library's own backlog of 5 makes bursts of connections wait a second
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
  endIdleConnections(state_->port);
}

}  // namespace TalvoConsentSDK::service
