#ifndef QUORVANE_APPS_BATCH_SHARD_H
#define QUORVANE_APPS_BATCH_SHARD_H

#include <string>

namespace quorvane::app {

/// A part of a list: photo i of it, counted from 0, belongs to shard i % count + 1.
struct Shard {
    int number = 1;  ///< 1..count
    int count = 1;

    bool has(size_t place) const {
        return place % static_cast<size_t>(count) == static_cast<size_t>(number - 1);
    }

    /// What files of this shard have in their names: "-2-of-8"; empty where the list is in one piece.
    std::string suffix() const;
};

/// "I/N" of --shard; "auto", where both numbers come from the environment of a Slurm or AWS Batch array; or
/// "auto/N", where I does, for a Kubernetes Indexed Job too. Throws UsageError.
Shard parseShard(const std::string& text);

}  // namespace quorvane::app

#endif
