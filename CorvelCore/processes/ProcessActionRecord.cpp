#include "processes/ProcessActionRecord.h"

#include "common/UUID.h"

namespace corvel {

ProcessActionRecord::ProcessActionRecord(TimePoint date_, ProcessAction action_, std::string name_,
                                         std::vector<std::int32_t> pids_, std::string outcome_)
    : id(UUID::random()),
      date(date_),
      action(action_),
      name(std::move(name_)),
      pids(std::move(pids_)),
      outcome(std::move(outcome_)) {}

}  // namespace corvel
