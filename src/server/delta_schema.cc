#include "server/delta_schema.h"

#include <string_view>

#include <nlohmann/json.hpp>

namespace context_delta::server {
namespace {

constexpr std::string_view SCHEMA = R"json({
  "type": "object",
  "description": "What a branch changed since it left its base",
  "properties": {
    "base_branch": {"type": "string"},
    "target_branch": {"type": "string", "description": "a short commit id when HEAD is detached"},
    "commit_count": {"type": "integer", "description": "commits of the branch that the base lacks"},
    "total_changed_files": {"type": "integer", "description": "those that source_only kept"},
    "excluded_files": {"type": "integer", "description": "those that it did not"},
    "affected_files": {
      "type": "array", "description": "changed files, most depended-on first",
      "items": {
        "type": "object",
        "properties": {
          "path": {"type": "string"},
          "status": {"type": "string",
            "description": "added, modified, deleted, renamed or type_changed"},
          "old_path": {"type": "string", "description": "of renames"},
          "additions": {"type": "integer"},
          "deletions": {"type": "integer"},
          "symbols": {"type": "integer", "description": "that the file defines"},
          "references": {"type": "integer", "description": "proven, from other files"}
        },
        "required": ["path", "status", "additions", "deletions", "symbols", "references"]
      }
    },
    "symbols": {
      "type": "array", "description": "symbols on the changed lines",
      "items": {
        "type": "object",
        "properties": {
          "fqn": {"type": "string"},
          "name": {"type": "string"},
          "kind": {"type": "string"},
          "file": {"type": "string"},
          "line": {"type": "integer"},
          "end_line": {"type": "integer"},
          "status": {"type": "string", "description": "of the file"},
          "signature": {"type": "string"}
        },
        "required": ["fqn", "name", "kind", "file", "line", "end_line", "status"]
      }
    },
    "callers": {
      "type": "array", "description": "callers that a call edge proves",
      "items": {
        "type": "object",
        "properties": {
          "fqn": {"type": "string"},
          "name": {"type": "string"},
          "kind": {"type": "string"},
          "file": {"type": "string"},
          "line": {"type": "integer"},
          "call_line": {"type": "integer"},
          "calls": {"type": "string", "description": "fqn of the changed symbol"}
        },
        "required": ["fqn", "name", "kind", "file", "line", "call_line", "calls"]
      }
    },
    "neighbours": {
      "type": "array", "description": "callers that are only guessed",
      "items": {
        "type": "object",
        "properties": {
          "fqn": {"type": "string"},
          "name": {"type": "string"},
          "kind": {"type": "string"},
          "file": {"type": "string"},
          "line": {"type": "integer"},
          "call_line": {"type": "integer"},
          "relation": {"type": "string"},
          "reason": {"type": "string"},
          "calls": {"type": "string"}
        },
        "required": ["fqn", "name", "kind", "file", "line", "call_line", "relation", "reason",
          "calls"]
      }
    },
    "snippets": {
      "type": "array", "description": "first changed lines of the first files",
      "items": {
        "type": "object",
        "properties": {
          "file": {"type": "string"},
          "line": {"type": "integer"},
          "end_line": {"type": "integer"},
          "content": {"type": "string"}
        },
        "required": ["file", "line", "end_line", "content"]
      }
    },
    "tokens_used": {"type": "integer"},
    "truncated": {"type": "boolean", "description": "whether anything was left out, by the budget or by the limits of 50 symbols of a file and 10 callers of a symbol"},
    "message": {"type": "string", "description": "when no kept file changed"},
    "error": {"type": "string", "description": "when git cannot compare: why, and what to do"},
    "total_changed_symbols": {"type": "integer"},
    "files_omitted": {"type": "integer", "description": "left out by the budget"},
    "symbols_omitted": {"type": "integer",
      "description": "by the budget, or after the first 50 of a file"},
    "callers_omitted": {"type": "integer",
      "description": "of the first 20 symbols: by the budget, or after the first 10 of a symbol"},
    "neighbours_omitted": {"type": "integer"},
    "wiki_pages": {
      "type": "array", "description": "pages that cite the changed files",
      "items": {
        "type": "object",
        "properties": {
          "page": {"type": "string"},
          "title": {"type": "string"},
          "sources": {"type": "array", "items": {"type": "string"}},
          "stale": {"type": "boolean"},
          "reason": {"type": "string"},
          "stale_source": {"type": "string"},
          "changed_in": {"type": "string"}
        },
        "required": ["page", "title", "sources", "stale", "reason"]
      }
    },
    "warning": {"type": "string",
      "description": "what to keep in mind of the answer"}
  },
  "required": ["affected_files", "symbols", "callers", "neighbours", "snippets", "tokens_used",
    "truncated"],
  "anyOf": [
    {"required": ["base_branch", "target_branch", "commit_count", "total_changed_files",
      "excluded_files", "total_changed_symbols", "files_omitted", "symbols_omitted",
      "callers_omitted", "neighbours_omitted"]},
    {"required": ["base_branch", "target_branch", "commit_count", "total_changed_files",
      "excluded_files", "message"]},
    {"required": ["error"]}
  ]
})json";

}  // namespace

const std::string& delta_schema() {
  static const std::string TEXT = nlohmann::ordered_json::parse(SCHEMA).dump();
  return TEXT;
}

}  // namespace context_delta::server
