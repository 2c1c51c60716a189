#pragma once

#include <string>
#include <string_view>

#include "server/json_rpc.h"
#include "utils/json.h"

/// The revisions of the protocol and what differs between them.
namespace context_delta::server {

/// A revision of the protocol.
struct Revision {
  std::string_view name;   ///< its date
  bool stateless;          ///< each request names its revision; there is no handshake
  bool batches;            ///< a line may hold a list of messages
  bool tool_annotations;   ///< tools carry hints
  bool structured_output;  ///< tools have a title and an output schema, results structuredContent
};

/// The revision that the handshake settles on: the one asked for, else the newest that has a
/// handshake. Raises ProtocolError when `params` asks for none.
const Revision& negotiated(const Json& params);

const Revision& newest_with_handshake();

/// Whether a request carries the envelope of stateless revisions, whole or in part.
bool has_envelope(const Json& params);

/// The revision that the envelope of a request names. Raises ProtocolError: it is not whole, or the
/// revision is not known or has no envelope.
const Revision& revision_of_envelope(const Json& params);

/// What the server says about itself.
struct Introduction {
  std::string version;       ///< of this program
  std::string instructions;  ///< to the model: a few sentences
};

/// Results, as JSON text.
std::string initialize_result(const Introduction& introduction, const Revision& revision);
std::string discover_result(const Introduction& introduction, const Revision& revision);

/// The result with these fields (the inside of a JSON mapping, may be empty), and what every result
/// of the revision has.
std::string completed(const Introduction& introduction, const Revision& revision,
                      const std::string& fields);

/// The fields that say how long a result may be kept, a comma after them; empty when the revision
/// has none.
std::string cache_fields(const Revision& revision);

}  // namespace context_delta::server
