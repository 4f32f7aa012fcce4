// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/ServedPages.h"

#include "host/cimxml/server/OpenUsers.h"
#include "host/tvpcim/remote/PageDocument.h"
#include "host/tvpcim/remote/ServerMetrics.h"

#include <exception>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

using cimxml::HttpCall;
using cimxml::HttpReply;

constexpr std::chrono::seconds INTERVAL{1};

HttpReply reply(int status, std::string contentType, std::string body) {
  HttpReply answer;
  answer.status = status;
  answer.contentType = std::move(contentType);
  answer.body = std::move(body);
  answer.headers = {
      {"Cache-Control", "no-store"},
      {"X-Content-Type-Options", "nosniff"},
      {"Cross-Origin-Resource-Policy", "same-origin"},
      {"Referrer-Policy", "no-referrer"}};
  answer.operation = "page";
  return answer;
}

HttpReply sentence(int status, const std::string& text) {
  return reply(status, "text/plain; charset=utf-8", text + "\n");
}

HttpReply later(const std::string& text) {
  HttpReply answer = sentence(503, text);
  answer.headers["Retry-After"] = "1";
  return answer;
}

/** What is asked for again and again has no line in the log. */
HttpReply routine(std::string contentType, std::string body) {
  HttpReply answer = reply(200, std::move(contentType), std::move(body));
  answer.routine = true;
  return answer;
}

HttpReply json(std::string text) {
  return routine("application/json; charset=utf-8", std::move(text));
}

HttpReply answerDocument(const PageDocument& document) {
  HttpReply answer = reply(200, "text/html; charset=utf-8", document.text());
  answer.headers["Content-Security-Policy"] = document.policy();
  answer.headers["X-Frame-Options"] = "DENY";
  return answer;
}

/** The number in "volume=NUMBER". */
std::optional<std::uint32_t> volumeIn(const std::string& query) {
  const std::string name = "volume=";
  constexpr std::size_t MOST_DIGITS = 9;
  const std::string digits = query.compare(0, name.size(), name) == 0 ? query.substr(name.size()) : "";
  if (digits.empty() || digits.size() > MOST_DIGITS ||
      digits.find_first_not_of("0123456789") != std::string::npos) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(std::stoul(digits));
}

/** A handler that answers 500 where its function throws, which happens when memory is exhausted. */
template <typename Function>
cimxml::CallHandler guarded(Function function) {
  return [function](const HttpCall& call) {
    try {
      return function(call);
    } catch (const std::exception&) {
      HttpReply failure;
      failure.status = 500;
      return failure;
    }
  };
}

}  // namespace

ServedPages::ServedPages(Tool& tool, const RecentEvents& events)
    : m_data(tool, events), m_texts(INTERVAL, [this] { return m_data.read(); }) {}

void ServedPages::offer(cimxml::HttpServer& server, std::optional<cimxml::PageReaders> metrics) {
  const auto document = std::make_shared<const PageDocument>();
  server.onPage("/", guarded([document](const HttpCall&) { return answerDocument(*document); }));
  server.onPage("/page.json", guarded([this](const HttpCall& call) { return answerData(call); }));
  server.onPage("/heat.json", guarded([this](const HttpCall& call) { return answerHeat(call); }));
  if (metrics) {
    server.onPage(
        "/metrics", guarded([this, &server](const HttpCall&) { return answerMetrics(server.counts()); }),
        *metrics);
  }
}

HttpReply ServedPages::answerData(const HttpCall& call) {
  const std::shared_ptr<const PageTexts> texts = m_texts.get();
  return json(cimxml::isAdministrator(call.user) ? texts->forAdministrators : texts->forOthers);
}

HttpReply ServedPages::answerHeat(const HttpCall& call) {
  const std::optional<std::uint32_t> volume = volumeIn(call.query);
  if (!volume) {
    return sentence(404, "Ask for the heat of a volume by its identifier: /heat.json?volume=1");
  }
  if (!cimxml::isAdministrator(call.user)) {
    return sentence(403, "The heat of volumes is for administrators.");
  }
  const std::shared_ptr<const PageTexts> texts = m_texts.get();
  if (!texts->isReadable) {
    return later("The storage cannot be read; /page.json says why.");
  }
  if (texts->volumes.count(*volume) == 0) {
    return sentence(404, "There is no such volume.");
  }
  const std::string text = m_heat.of(*volume);
  return text.empty() ? later("Others are asking; try again.") : json(text);
}

HttpReply ServedPages::answerMetrics(const cimxml::ServerCounts& counts) {
  MetricsText metrics = m_texts.get()->metrics;
  addServerMetrics(counts, metrics);
  return routine(MetricsText::CONTENT_TYPE, metrics.text());
}

}  // namespace tvp::host::tvpcim
