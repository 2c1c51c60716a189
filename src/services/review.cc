#include "services/review.h"

namespace context_delta::services {

Review::Review(const git_utils::Git& git, const DeltaRequest& request)
    : git_(git),
      sides_(git_history::find_sides(git_, {request.base_branch, request.target_branch,
                                            request.base_parameter, request.target_parameter})),
      history_(git_),
      changes_(history_.branch_changes(sides_)) {}

}  // namespace context_delta::services
