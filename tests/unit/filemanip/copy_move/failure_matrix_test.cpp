// Every call of the storage that the two commands make, failing with every code, at each location that the
// failure may carry, with and without force, for paths and for locations: what is told, and what is left.
#include <algorithm>
#include <optional>
#include <sstream>

#include "runtime/dispatcher/current_folder.h"
#include "runtime/text/encoding.h"
#include "tests/unit/filemanip/copy_move/failure_scenarios.h"

namespace korvex::filemanip::tests {
namespace {

using storage::Call;
using storage::Operation;
using Moment = storage::Fault::Moment;
using testing::IsEmpty;

const std::u16string elsewhere = u"/elsewhere";

/// One run of a scenario, and what is known of its end.
class ScenarioRun {
public:
    ScenarioRun(const Scenario& scenario, const Setting& setting, bool isForced)
        : scenario_(scenario),
          setting_(setting),
          isForced_(isForced),
          expected_(startOf(scenario, isForced)) {
        storage_.put(setting.prefix + u"/");
        for (const auto& [key, content] : expected_) {
            const std::string mark = readOnlyMark;
            const bool isProtected = content.starts_with(mark);
            const std::u16string at = path(u"/" + runtime::text::fromBytes(key));
            storage_.put(at, content.substr(isProtected ? mark.size() : 0));
            if (isProtected) storage_.protect(at);
        }
        runtime::dispatcher::setCurrentFolderPath(scenario.currentFolder);
        storage_.provider->forgetCalls();
        for (const Step& step : scenario.steps) {
            if (step.belongsTo(isForced)) steps_.push_back(step);
        }
    }

    const std::vector<Step>& steps() const { return steps_; }

    /// The step of that index is to fail.
    void failStep(std::size_t index, vfs::ErrorCode code, const std::u16string& failed, Moment moment) {
        failing_ = index;
        code_ = code;
        failed_ = failed;
        moment_ = moment;
        const Operation operation = steps_[index].operation;
        const auto end = steps_.begin() + static_cast<std::ptrdiff_t>(index) + 1;
        const auto number =
            std::count_if(steps_.begin(), end, [&](const Step& step) { return step.operation == operation; });
        storage_.provider->failCall(operation, static_cast<std::size_t>(number),
                                    {.code = code, .location = storage_.at(failed), .moment = moment});
    }

    void check() {
        Texts arguments{path(scenario_.source), path(scenario_.destination)};
        if (isForced_) arguments.emplace_back(u"f");
        const Failure told = failureOf(scenario_.command, arguments);
        simulate();
        EXPECT_EQ(told, toldInTheEnd_);
        Tree left = storage_.treeOf(path(u"/"));
        left.erase("here/");
        EXPECT_EQ(left, expected_);
        EXPECT_EQ(environment_.takeEvents().empty(), toldInTheEnd_ != noFailure());
        EXPECT_EQ(storage_.provider->faultsRaised(), failing_ ? 1U : 0U);
        checkThatNothingIsLost(left);
    }

    /// The calls of a run in which nothing fails are just the steps.
    void checkCalls() const {
        std::vector<Call> calls = storage_.provider->calls();
        // The environment's own services resolve locations.
        std::erase_if(calls, [](const Call& call) { return call.operation == Operation::canonicalLocation; });
        std::vector<Call> listed;
        for (const Step& step : steps_)
            listed.push_back(callOf(step));
        EXPECT_THAT(calls, testing::ElementsAreArray(listed));
    }

    std::u16string path(const std::u16string& path) const { return setting_.prefix + path; }
    std::u16string placeOf(const Step& step) const {
        return step.handler == Handler::currentFolder ? step.location : path(step.location);
    }

private:
    Call callOf(const Step& step) const {
        Call call{step.operation, storage_.at(placeOf(step))};
        if (!step.destination.empty()) call.destination = storage_.at(path(step.destination));
        return call;
    }

    /// Goes through the steps as the rules say, up to the one that ends the run.
    void simulate() {
        for (std::size_t index = 0; index < steps_.size(); ++index) {
            const Step& step = steps_[index];
            const bool isFailing = failing_ == index;
            if (!step.isRefused && (!isFailing || moment_ == Moment::after)) apply(step, expected_);
            if (!isFailing) continue;
            toldInTheEnd_ = explained(step.handler, code_, circumstancesOf(step));
            if (toldInTheEnd_ == noFailure()) continue;
            return undo(index);
        }
        if (scenario_.findsNothing) {
            toldInTheEnd_ = explained(Handler::run, vfs::resourceNotFound, circumstancesOfNoMatch());
        }
    }

    /// Of the folders that were made for the destination the lowest goes again, if it can.
    void undo(std::size_t failedStep) {
        const bool isUndone = steps_[failedStep].handler == Handler::transfer ||
                              steps_[failedStep].handler == Handler::newFolder ||
                              steps_[failedStep].handler == Handler::ownContents;
        const auto end = steps_.begin() + static_cast<std::ptrdiff_t>(failedStep);
        const auto made = std::find_if(steps_.begin(), end, [](const Step& step) {
            return step.operation == Operation::createFolderRecursive;
        });
        if (!isUndone || made == end) return;
        const std::string key = runtime::text::toDisplayBytes(made->location.substr(1)) + '/';
        const auto inIt = std::count_if(expected_.begin(), expected_.end(),
                                        [&](const auto& item) { return item.first.starts_with(key); });
        if (inIt == 1) {
            expected_.erase(key);
            return;
        }
        // That it holds something by now is a failure of its own, and the last one is told: in the command's
        // words where a message about permissions has gone back to them.
        const bool saysPermission = toldInTheEnd_.entry.find("PermissionError") != std::string::npos;
        const Setting words{setting_.command, saysPermission ? u"" : setting_.prefix};
        Circumstances circumstances = circumstancesOf(*made);
        circumstances.failed = path(made->location);
        toldInTheEnd_ = explainedIn(words, vfs::folderNotEmpty, circumstances);
    }

    static Failure explainedIn(const Setting& words, vfs::ErrorCode code, const Circumstances& known) {
        return explained(Handler::run, code,
                         {.setting = words,
                          .isForced = known.isForced,
                          .source = known.source,
                          .destination = known.destination,
                          .item = known.item,
                          .target = known.target,
                          .failed = known.failed,
                          .itemKind = known.itemKind,
                          .targetKind = known.targetKind});
    }

    Circumstances circumstancesOf(const Step& step) const {
        const std::u16string item = placeOf(step);
        const std::u16string target =
            path(step.destination.empty() ? scenario_.destination : step.destination);
        return {.setting = setting_,
                .isForced = isForced_,
                .source = path(scenario_.source),
                .destination = path(scenario_.destination),
                .item = item,
                .target = target,
                .failed = failed_,
                .itemKind = storage_.existence(item),
                .targetKind = storage_.existence(target)};
    }
    Circumstances circumstancesOfNoMatch() const {
        Circumstances circumstances = circumstancesOf(steps_.front());
        circumstances.failed = path(scenario_.source);
        return circumstances;
    }

    /// Whatever happens, each content is still somewhere, in whole; but for one that was to be replaced.
    void checkThatNothingIsLost(const Tree& left) const {
        for (const auto& item : startOf(scenario_, false)) {
            const std::string& content = item.second;
            if (content.empty() || content == "old") continue;
            const bool isLeft = std::any_of(left.begin(), left.end(),
                                            [&](const auto& found) { return found.second == content; });
            EXPECT_TRUE(isLeft) << "lost: " << item.first;
        }
    }

    const Scenario& scenario_;
    const Setting& setting_;
    const bool isForced_;
    WatchedStorage storage_;
    EnvironmentObserver environment_;
    std::vector<Step> steps_;
    std::optional<std::size_t> failing_;
    vfs::ErrorCode code_ = vfs::unknownError;
    std::u16string failed_;
    Moment moment_ = Moment::before;
    /// What the storage is to hold at the end, below the prefix.
    Tree expected_;
    Failure toldInTheEnd_;
};

class FailureMatrixTest : public testing::TestWithParam<Scenario> {
protected:
    template <class Check>
    static void forEachSetting(const Check& check) {
        for (const std::u16string prefix : {u"", u"memory://box"}) {
            if (!prefix.empty() && GetParam().hasOnlyPaths) continue;
            const Setting setting{GetParam().command, prefix};
            for (const bool isForced : {false, true})
                check(setting, isForced);
        }
    }

    static void failEachWay(const Setting& setting, bool isForced, std::size_t index, vfs::ErrorCode code) {
        const ScenarioRun described(GetParam(), setting, isForced);
        const Step& step = described.steps()[index];
        const std::u16string& other = step.destination.empty() ? GetParam().destination : step.destination;
        for (const std::u16string& failed : {described.placeOf(step), described.path(other),
                                             described.path(GetParam().source), described.path(elsewhere)}) {
            for (const Moment moment : {Moment::before, Moment::after}) {
                if (moment == Moment::after && (!step.isChange() || step.isRefused)) continue;
                std::ostringstream what;
                what << (setting.hasScheme() ? "location" : "path") << (isForced ? ", forced" : "")
                     << ", step " << index << ' ' << nameOf(step.operation) << ", code " << code << " at "
                     << runtime::text::toDisplayBytes(failed)
                     << (moment == Moment::after ? ", after it took effect" : "");
                SCOPED_TRACE(what.str());
                ScenarioRun run(GetParam(), setting, isForced);
                run.failStep(index, code, failed, moment);
                run.check();
            }
        }
    }
};

INSTANTIATE_TEST_SUITE_P(CopyMove, FailureMatrixTest, testing::ValuesIn(allScenarios()),
                         [](const testing::TestParamInfo<Scenario>& scenario) {
                             return std::string(scenario.param.command.name) + '_' + scenario.param.name;
                         });

TEST_P(FailureMatrixTest, WithoutAFailureTheStorageIsAskedJustThis) {
    forEachSetting([](const Setting& setting, bool isForced) {
        SCOPED_TRACE((setting.hasScheme() ? "location" : "path") + std::string(isForced ? ", forced" : ""));
        ScenarioRun run(GetParam(), setting, isForced);
        run.check();
        run.checkCalls();
    });
}

TEST_P(FailureMatrixTest, EachFailureIsToldByItsPlaceAndLosesNothing) {
    forEachSetting([](const Setting& setting, bool isForced) {
        const std::size_t count = ScenarioRun(GetParam(), setting, isForced).steps().size();
        for (std::size_t index = 0; index < count; ++index) {
            for (int code = vfs::folderNotEmpty; code <= vfs::unknownError && !HasFailure(); ++code)
                failEachWay(setting, isForced, index, static_cast<vfs::ErrorCode>(code));
        }
    });
}

}  // namespace
}  // namespace korvex::filemanip::tests
