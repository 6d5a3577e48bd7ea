#include "apps/quorvane/commands/failure.h"

#include <new>

#include "apps/quorvane/terminal/usage_error.h"
#include "system/child_process.h"
#include "system/error.h"

namespace quorvane::app {
namespace {

constexpr char kOption[] = "--exit-codes";
constexpr char kSysexits[] = "sysexits";

}  // namespace

Failure failureOf(const std::exception_ptr& thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (const UsageError& error) {
        return {error.what(), kWrongUsage, kSysexitUsage};
    } catch (const TemporaryError& error) {
        return {error.what(), kFailed, kSysexitTryAgain};
    } catch (const StartError& error) {
        return {error.what(), kFailed, isTemporary(error.reason()) ? kSysexitTryAgain : kSysexitNever};
    } catch (const Cancelled& cancelled) {
        return {cancelled.what(), kFailed, kSysexitTryAgain};
    } catch (const std::bad_alloc&) {
        return {"out of memory", kFailed, kSysexitTryAgain};
    } catch (const std::exception& error) {
        return {error.what()};
    }
}

void addExitCodesOption(CommandLine* line) {
    line->word(
        kOption, {"plain", kSysexits}, [](size_t) {},
        "sysexits: 64 for wrong usage, 65 for what will fail again, 75 for what may succeed later; plain: 2, "
        "1 "
        "and 1 (default plain)");
}

bool wantsSysexits(int argc, const char* const* argv) {
    const std::string option = kOption;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == option + "=" + kSysexits ||
            (word == option && i + 1 < argc && argv[i + 1] == std::string(kSysexits)))
            return true;
    }
    return false;
}

}  // namespace quorvane::app
