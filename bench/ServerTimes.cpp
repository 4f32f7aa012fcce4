// SPDX-License-Identifier: Apache-2.0
#include "bench/Measurements.h"
#include "bench/Threads.h"
#include "host/cimxml/message/MessageWriter.h"
#include "tests/support/ServedProvider.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

namespace bench {

using tvp::host::Arguments;
using tvp::host::ObjectPath;
using tvp::host::Value;
using tvp::host::cimxml::IntrinsicParameter;
using Clock = std::chrono::steady_clock;

namespace {

constexpr const char* NAMESPACE = tvp::test::ServedProvider::NAMESPACE;

/** One kind of request: as bytes for a server, and as a call of the provider. */
struct ServedRequest {
  std::string what;
  std::string method;
  std::string object;  ///< the header CIMObject, encoded
  std::string body;
  std::function<void(tvp::host::Provider& provider)> call;

  std::string bytes(bool keepAlive) const {
    return "POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/xml; charset=\"utf-8\"\r\n"
           "CIMOperation: MethodCall\r\nCIMMethod: " +
           method + "\r\nCIMObject: " + object + "\r\nConnection: " + (keepAlive ? "keep-alive" : "close") +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  }
};

ServedRequest enumeration(const Scenario& scenario) {
  const ObjectPath path{NAMESPACE, "TVP_LogicalDevice", {}, ""};
  IntrinsicParameter name;
  name.name = "ClassName";
  name.kind = IntrinsicParameter::Kind::ClassName;
  name.text = path.className;
  return {
      "EnumInstances, " + std::to_string(scenario.count) + " drives", "EnumerateInstances",
      "root%2Fkvs%2Ftvp%2Fsmi_15",
      tvp::host::cimxml::intrinsicRequest("1", "EnumerateInstances", NAMESPACE, {name}),
      [path](tvp::host::Provider& provider) { static_cast<void>(provider.enumerateInstances(path)); }};
}

ServedRequest retrieval() {
  const ObjectPath path{
      NAMESPACE,
      "TVP_TierService",
      {{"CreationClassName", Value::string("TVP_TierService")},
       {"Name", Value::string("TVP_TierServiceInstance1")}},
      ""};
  IntrinsicParameter name;
  name.name = "InstanceName";
  name.kind = IntrinsicParameter::Kind::InstanceName;
  name.path = path;
  return {
      "GetInstance, the service", "GetInstance", "root%2Fkvs%2Ftvp%2Fsmi_15",
      tvp::host::cimxml::intrinsicRequest("1", "GetInstance", NAMESPACE, {name}),
      [path](tvp::host::Provider& provider) { static_cast<void>(provider.getInstance(path)); }};
}

ServedRequest invocation() {
  const ObjectPath path{NAMESPACE, "TVP_TierService", {}, ""};
  const Arguments input = Arguments().add("VirtualPoolId", Value::uint32(1));
  return {
      "InvokeMethod, members of a pool", "GetVirtualPoolMembers",
      "root%2Fkvs%2Ftvp%2Fsmi_15%3ATVP_TierService",
      tvp::host::cimxml::methodRequest("1", path, "GetVirtualPoolMembers", input),
      [path, input](tvp::host::Provider& provider) {
        static_cast<void>(provider.invokeMethod(path, "GetVirtualPoolMembers", input));
      }};
}

std::vector<ServedRequest> requestsFor(const Scenario& scenario) {
  if (scenario.sort == "pools") {
    return {invocation()};
  }
  return scenario.count == 8 ? std::vector<ServedRequest>{retrieval(), enumeration(scenario)}
                             : std::vector<ServedRequest>{enumeration(scenario)};
}

/** A client that does as little as it can, so that the server is what is measured. */
class Client {
public:
  Client(std::uint16_t port, const ServedRequest& request, bool keepAlive)
      : m_port(port), m_bytes(request.bytes(keepAlive)), m_keepAlive(keepAlive) {}
  ~Client() { disconnect(); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  void exchange() {
    connect();
    if (::send(m_socket, m_bytes.data(), m_bytes.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(m_bytes.size())) {
      throw std::runtime_error("the server does not take a request");
    }
    readAnswer();
    if (!m_keepAlive) {
      disconnect();
    }
  }

private:
  void connect() {
    if (m_socket >= 0) {
      return;
    }
    m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
      throw std::runtime_error("the server takes no connection");
    }
  }

  void disconnect() {
    if (m_socket >= 0) {
      ::close(m_socket);
      m_socket = -1;
    }
  }

  void readAnswer() {
    std::size_t size = 0;
    std::size_t wanted = 0;  // 0: the head is not complete
    while (wanted == 0 || size < wanted) {
      m_answer.resize(std::max(wanted, size + 65536));
      const ssize_t count = ::recv(m_socket, m_answer.data() + size, m_answer.size() - size, 0);
      if (count <= 0) {
        throw std::runtime_error("the server closed a connection before its answer was complete");
      }
      size += static_cast<std::size_t>(count);
      const std::string_view received(m_answer.data(), size);
      const std::size_t end = received.find("\r\n\r\n");
      if (wanted == 0 && end != std::string_view::npos) {
        wanted = end + 4 + contentLength(received.substr(0, end));
      }
    }
  }

  static std::size_t contentLength(std::string_view head) {
    const std::string_view name = "Content-Length: ";
    const std::size_t start = head.find(name);
    if (head.rfind("HTTP/1.1 200", 0) != 0 || start == std::string_view::npos) {
      throw std::runtime_error("the server refused a request: " + std::string(head));
    }
    return std::stoul(std::string(head.substr(start + name.size())));
  }

  const std::uint16_t m_port;
  const std::string m_bytes;
  const bool m_keepAlive;
  int m_socket = -1;
  std::string m_answer;
};

/** The provider, and a server for it. */
class Served {
public:
  Served() : m_subject(Subject::Kind::Product), m_server(std::string(TVP_BINARY_DIR) + "/share/tarvexpro") {
    m_server.start(m_subject.provider());
  }

  tvp::host::Provider& provider() { return m_subject.provider(); }
  std::uint16_t port() const { return m_server.port(); }

private:
  Subject m_subject;
  tvp::test::ServedProvider m_server;
};

struct Rate {
  double perSecond = 0;
  double median = 0;  ///< in microseconds
  double slow = 0;    ///< the 99th percentile
};

constexpr std::chrono::milliseconds A_WHILE(500);

/** Lets a number of threads repeat what each of them makes. */
template <typename Make>
Rate rateOf(unsigned int threads, std::chrono::milliseconds duration, Make make) {
  std::mutex mutex;
  std::vector<double> times;
  const Clock::time_point start = Clock::now();
  onThreads(threads, [&] {
    const std::function<void()> repeated = make();
    std::vector<double> own;
    Clock::time_point before = Clock::now();
    do {  // once at least, however late a busy machine starts the thread
      repeated();
      const Clock::time_point after = Clock::now();
      own.push_back(std::chrono::duration<double, std::micro>(after - before).count());
      before = after;
    } while (before - start < duration);
    const std::lock_guard<std::mutex> lock(mutex);
    times.insert(times.end(), own.begin(), own.end());
  });
  const std::chrono::duration<double> elapsed = Clock::now() - start;
  std::sort(times.begin(), times.end());
  constexpr std::size_t PERCENT = 100;
  return {
      static_cast<double>(times.size()) / elapsed.count(), times[times.size() / 2],
      times[times.size() * (PERCENT - 1) / PERCENT]};
}

Rate rateOverHttp(
    const Served& served, const ServedRequest& request, unsigned int clients, bool keepAlive,
    std::chrono::milliseconds duration = A_WHILE) {
  return rateOf(clients, duration, [&]() -> std::function<void()> {
    const auto client = std::make_shared<Client>(served.port(), request, keepAlive);
    return [client] { client->exchange(); };
  });
}

Rate rateWithoutHttp(Served& served, const ServedRequest& request, unsigned int threads) {
  return rateOf(
      threads, A_WHILE, [&]() -> std::function<void()> { return [&] { request.call(served.provider()); }; });
}

}  // namespace

void measureServer(const Scenario& scenario) {
  Served served;
  const auto print = [](const ServedRequest& request, unsigned int clients, const char* how,
                        const Rate& rate) {
    std::printf(
        "%s\t%u\t%s\t%.0f\t%.0f\t%.0f\n", request.what.c_str(), clients, how, rate.perSecond, rate.median,
        rate.slow);
  };
  for (const ServedRequest& request : requestsFor(scenario)) {
    for (const unsigned int clients : {1U, 8U, 64U}) {
      print(request, clients, "kept", rateOverHttp(served, request, clients, true));
      print(request, clients, "new each time", rateOverHttp(served, request, clients, false));
      print(request, clients, "none, the provider alone", rateWithoutHttp(served, request, clients));
    }
  }
}

void measureServerCores(const Scenario& scenario, bool one) {
  if (one) {
    cpu_set_t first;
    CPU_ZERO(&first);
    CPU_SET(0, &first);
    // Before there are threads, which inherit it.
    if (::sched_setaffinity(0, sizeof first, &first) != 0) {
      throw std::runtime_error("cannot stay on one core");
    }
  }
  constexpr unsigned int CLIENTS = 8;
  constexpr std::chrono::seconds LONG(2);
  const Served served;
  std::printf("%.1f\n", rateOverHttp(served, enumeration(scenario), CLIENTS, true, LONG).perSecond);
}

void measureServerGrowth(const Scenario& scenario) {
  constexpr long FIRST = 1000;
  constexpr long LAST = 100000;
  const Served served;
  Client enumerating(served.port(), enumeration(scenario), true);
  Client getting(served.port(), retrieval(), true);
  long early = 0;
  for (long i = 0; i < LAST; ++i) {
    (i % 2 == 0 ? enumerating : getting).exchange();
    if (i + 1 == FIRST) {
      early = statusNumber("VmRSS");
    }
  }
  std::printf("%ld\t%ld\n", early, statusNumber("VmRSS"));
}

}  // namespace bench
