#include "server/protocol.h"

#include <algorithm>
#include <array>

namespace context_delta::server {
namespace {

// Newest first.
constexpr std::array<Revision, 5> REVISIONS = {{
    {"2026-07-28", true, false, true, true},
    {"2025-11-25", false, false, true, true},
    {"2025-06-18", false, false, true, true},
    {"2025-03-26", false, true, true, false},
    {"2024-11-05", false, true, false, false},
}};

constexpr const char* VERSION_KEY = "io.modelcontextprotocol/protocolVersion";
constexpr const char* CAPABILITIES_KEY = "io.modelcontextprotocol/clientCapabilities";

/// What the server offers does not change while it runs.
constexpr std::string_view CACHE_FIELDS = R"("ttlMs": 3600000, "cacheScope": "private", )";

json::Mapping server_info(const Introduction& introduction) {
  return {{"name", "context-delta"}, {"title", "Context Delta"}, {"version", introduction.version}};
}

json::List revision_names() {
  json::List names;
  for (const Revision& revision : REVISIONS) names.emplace_back(revision.name);
  return names;
}

const Json* envelope(const Json& params) {
  const auto meta = params.find("_meta");
  return meta == params.end() || !meta->is_object() ? nullptr : &*meta;
}

[[noreturn]] void fail_on_revision(const std::string& requested) {
  const json::Mapping data = {{"supported", revision_names()}, {"requested", requested}};
  throw ProtocolError(ErrorCode::UNSUPPORTED_PROTOCOL_VERSION,
                      "unsupported protocol version in _meta: " + requested.substr(0, 100),
                      json::json_text(data));
}

}  // namespace

const Revision& negotiated(const Json& params) {
  const auto asked = params.find("protocolVersion");
  if (asked == params.end() || !asked->is_string()) {
    throw ProtocolError(ErrorCode::INVALID_PARAMS,
                        "initialize needs protocolVersion, a string such as 2025-11-25");
  }
  const auto found = std::find_if(REVISIONS.begin(), REVISIONS.end(), [&](const Revision& each) {
    return !each.stateless && each.name == asked->get_ref<const std::string&>();
  });
  return found == REVISIONS.end() ? newest_with_handshake() : *found;
}

const Revision& newest_with_handshake() {
  return *std::find_if(REVISIONS.begin(), REVISIONS.end(),
                       [](const Revision& each) { return !each.stateless; });
}

bool has_envelope(const Json& params) {
  const Json* meta = envelope(params);
  return meta != nullptr && (meta->contains(VERSION_KEY) || meta->contains(CAPABILITIES_KEY));
}

const Revision& revision_of_envelope(const Json& params) {
  const Json* meta = envelope(params);
  const bool has_version = meta != nullptr && meta->contains(VERSION_KEY);
  if (!has_version || !meta->at(VERSION_KEY).is_string()) {
    throw ProtocolError(ErrorCode::INVALID_PARAMS,
                        std::string("the request needs _meta with \"") + VERSION_KEY +
                            "\", a string, or an initialize request before it");
  }
  const auto& name = meta->at(VERSION_KEY).get_ref<const std::string&>();
  const auto found = std::find_if(REVISIONS.begin(), REVISIONS.end(), [&](const Revision& each) {
    return each.stateless && each.name == name;
  });
  if (found == REVISIONS.end()) fail_on_revision(name);
  if (!meta->contains(CAPABILITIES_KEY) || !meta->at(CAPABILITIES_KEY).is_object()) {
    throw ProtocolError(ErrorCode::INVALID_PARAMS, std::string("the request needs _meta with \"") +
                                                       CAPABILITIES_KEY + "\", an object");
  }
  return *found;
}

std::string initialize_result(const Introduction& introduction, const Revision& revision) {
  return json::json_text(json::Mapping{
      {"protocolVersion", revision.name},
      {"capabilities", json::Mapping{{"tools", json::Mapping{}}}},
      {"serverInfo", server_info(introduction)},
      {"instructions", introduction.instructions},
  });
}

std::string discover_result(const Introduction& introduction, const Revision& revision) {
  const std::string body = json::json_text(json::Mapping{
      {"supportedVersions", revision_names()},
      {"capabilities", json::Mapping{{"tools", json::Mapping{}}}},
      {"instructions", introduction.instructions},
  });
  return completed(introduction, revision,
                   cache_fields(revision) + body.substr(1, body.size() - 2));
}

std::string completed(const Introduction& introduction, const Revision& revision,
                      const std::string& fields) {
  if (!revision.stateless) return "{" + fields + "}";
  const json::Mapping meta = {{"io.modelcontextprotocol/serverInfo", server_info(introduction)}};
  return "{\"resultType\": \"complete\", " + fields + (fields.empty() ? "" : ", ") +
         "\"_meta\": " + json::json_text(meta) + "}";
}

std::string cache_fields(const Revision& revision) {
  return revision.stateless ? std::string(CACHE_FIELDS) : "";
}

}  // namespace context_delta::server
