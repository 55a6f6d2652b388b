#include "consent/ConsentLedger.h"

#include "consent/ConsentChoices.h"
#include "consent/ConsentError.h"
#include "consent/ConsentGate.h"
#include "consent/Terms.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace corvel {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using Action = ConsentRecord::Action;

const TimePoint noon = *ISO8601::parse("2026-11-02T12:00:00Z");

struct Step {
    Action action;
    std::vector<ConsentScope> on;
};

ConsentLedger ledgerAfter(const std::vector<Step>& steps) {
    ConsentLedger ledger;
    for (const auto& step : steps) {
        std::map<ConsentScope, bool> scopes;
        for (const ConsentScope scope : step.on) scopes[scope] = true;
        ledger.record(step.action, scopes, "0.1.0", noon);
    }
    return ledger;
}

TEST(ConsentLedger, StateFollowsOnlyTheLastDecision) {
    using enum ConsentScope;
    const struct {
        const char* name;
        std::vector<Step> steps;
        ConsentState state;
        bool benchmarkGranted;
    } cases[] = {
        {"nothing decided", {}, ConsentState::notAccepted, false},
        {"accepted reading only", {{Action::accepted, {readStorage}}}, ConsentState::accepted, false},
        {"accepted with benchmark", {{Action::accepted, {readStorage, benchmark}}}, ConsentState::accepted, true},
        {"benchmark switched off",
         {{Action::accepted, {readStorage, benchmark}}, {Action::updated, {readStorage}}},
         ConsentState::accepted,
         false},
        {"withdrawn",
         {{Action::accepted, {readStorage, benchmark}}, {Action::withdrawn, {}}},
         ConsentState::withdrawn,
         false},
        {"withdrawn although the record says on",
         {{Action::accepted, {readStorage}}, {Action::withdrawn, {readStorage, benchmark}}},
         ConsentState::withdrawn,
         false},
        {"accepted again after withdrawing",
         {{Action::withdrawn, {}}, {Action::accepted, {readStorage, benchmark}}},
         ConsentState::accepted,
         true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto ledger = ledgerAfter(c.steps);
        EXPECT_EQ(ledger.state(), c.state);
        EXPECT_EQ(ledger.hasValidAcceptance(), c.state == ConsentState::accepted);
        EXPECT_EQ(ledger.isGranted(ConsentScope::benchmark), c.benchmarkGranted);
        EXPECT_EQ(ledger.isGranted(ConsentScope::readStorage), c.state == ConsentState::accepted);
        EXPECT_EQ(ledger.records.size(), c.steps.size());
    }
}

TEST(ConsentLedger, RefusesAnAcceptanceOrUpdateWithoutReadingStorageAndAppendsNothing) {
    auto ledger = ledgerAfter({{Action::accepted, {ConsentScope::readStorage}}});
    for (const Action action : {Action::accepted, Action::updated}) {
        try {
            ledger.record(action, {{ConsentScope::readStorage, false}, {ConsentScope::benchmark, true}}, "0.1.0", noon);
            ADD_FAILURE() << "recorded " << rawValue(action) << " without the required scope";
        } catch (const ConsentError& error) {
            EXPECT_EQ(error.kind(), ConsentError::Kind::requiredScopeMissing);
            EXPECT_THAT(error.description(), HasSubstr("Read storage information"));
        }
    }
    EXPECT_EQ(ledger.records.size(), 1u);
    EXPECT_TRUE(ledger.hasValidAcceptance());
}

TEST(ConsentLedger, RecordsWholeSecondsFlooredAndTheCurrentTerms) {
    ConsentLedger ledger;
    const auto& late = ledger.record(Action::withdrawn, {}, "0.1.0", *ISO8601::parse("2026-11-02T12:00:00.999Z"));
    EXPECT_EQ(late.date, noon);
    const auto& early = ledger.record(Action::withdrawn, {}, "0.1.0", *ISO8601::parse("1969-12-31T23:59:59.5Z"));
    EXPECT_EQ(ISO8601::format(early.date), "1969-12-31T23:59:59Z");
    EXPECT_EQ(early.termsVersion, "2026-10-24.2");
    EXPECT_EQ(early.termsDigest, Terms::digest());
    EXPECT_NE(ledger.records[0].id, ledger.records[1].id);
}

TEST(ConsentLedger, AnAcceptanceOfOtherWordingAsksAgain) {
    auto ledger = ledgerAfter({{Action::accepted, {ConsentScope::readStorage, ConsentScope::benchmark}}});
    // One character of the digest differs: the person accepted other wording.
    auto& digest = ledger.records.back().termsDigest;
    digest.back() = digest.back() == '0' ? '1' : '0';
    EXPECT_EQ(ledger.state(), ConsentState::termsChanged);
    EXPECT_FALSE(ledger.isGranted(ConsentScope::benchmark));
    EXPECT_THAT(*ConsentGate::refusal(ledger, ConsentScope::benchmark),
                AllOf(HasSubstr("the terms changed"), HasSubstr("'velmora consent accept --scope benchmark'")));
}

TEST(Terms, DigestCoversEveryLineAndChangesWithOneCharacter) {
    EXPECT_THAT(Terms::digest(), MatchesRegex("[0-9a-f]{64}"));
    EXPECT_EQ(Terms::digest(), Terms::digestOf(Terms::lines()));
    // SHA-256 of "abc": the digest is the standard one over the bytes, lines joined by line feeds.
    EXPECT_EQ(Terms::digestOf({"abc"}), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Terms::digestOf({"a", "bc"}), Terms::digestOf({"a\nbc"}));
    auto changed = Terms::lines();
    changed.back().back() = '!';
    EXPECT_NE(Terms::digestOf(changed), Terms::digest());
    EXPECT_THAT(Terms::lines().front(), HasSubstr("2026-10-24.2"));
    EXPECT_EQ(Terms::lines().size(), 1 + Terms::summary().size() + allCases<ConsentScope>().size());
}

TEST(ConsentLedger, ACorruptFileReadsAsEmptyAndIsReplacedAtTheNextSave) {
    testing::TemporaryFolder folder;
    const auto path = ConsentLedger::defaultURL(folder.root());
    EXPECT_EQ(ConsentLedger::load(path), ConsentLedger{});
    for (const char* text : {"{not json", "[]", R"({"records": [{"id": 3}]})"}) {
        folder.write("consent.json", text);
        EXPECT_EQ(ConsentLedger::load(path), ConsentLedger{}) << text;
    }
    const auto ledger = ledgerAfter({{Action::accepted, {ConsentScope::readStorage, ConsentScope::processControl}}});
    ledger.save(path);
    EXPECT_EQ(ConsentLedger::load(path), ledger);
}

TEST(ConsentRecord, SkipsScopesThisVersionDoesNotKnow) {
    const auto record = parseJsonText(R"({"id": "x", "date": "2026-11-02T12:00:00Z", "action": "updated",
        "termsVersion": "v", "termsDigest": "d", "appVersion": "9.0",
        "scopes": {"readStorage": true, "teleportation": true}})",
                                      "record")
                            .get<ConsentRecord>();
    EXPECT_EQ(record.scopes, (std::map<ConsentScope, bool>{{ConsentScope::readStorage, true}}));
    EXPECT_EQ(record.action, Action::updated);
}

TEST(ConsentGate, RefusalNamesTheScopeAndTheCommandThatGrantsIt) {
    const struct {
        const char* name;
        std::vector<Step> steps;
        ConsentScope scope;
        const char* reason;
        const char* command;
    } cases[] = {
        {"no ledger",
         {},
         ConsentScope::diskOperations,
         "not accepted the terms yet",
         "velmora consent accept --scope diskOperations"},
        {"no ledger, required scope", {}, ConsentScope::readStorage, "not accepted", "velmora consent accept'"},
        {"switched off",
         {{Action::accepted, {ConsentScope::readStorage}}},
         ConsentScope::processControl,
         "switched off",
         "velmora consent update --scope processControl=on"},
        {"withdrawn",
         {{Action::withdrawn, {}}},
         ConsentScope::backgroundAgent,
         "withdrew",
         "velmora consent accept --scope backgroundAgent"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const auto refusal = ConsentGate::refusal(ledgerAfter(c.steps), c.scope);
        ASSERT_TRUE(refusal);
        EXPECT_THAT(*refusal, AllOf(HasSubstr(std::string(title(c.scope))), HasSubstr(std::string(rawValue(c.scope))),
                                    HasSubstr(c.reason), HasSubstr(c.command)));
        EXPECT_EQ(refusal->find('\n'), std::string::npos);
    }
    const auto granted = ledgerAfter({{Action::accepted, {ConsentScope::readStorage, ConsentScope::diskOperations}}});
    EXPECT_FALSE(ConsentGate::refusal(granted, ConsentScope::diskOperations));
}

TEST(ConsentChoices, ParsesChangesAndKeepsUnnamedScopes) {
    using Change = ConsentChoices::Change;
    EXPECT_EQ(ConsentChoices::parseChange("benchmark=on"), Change(ConsentScope::benchmark, true));
    EXPECT_EQ(ConsentChoices::parseChange(" benchmark = OFF "), Change(ConsentScope::benchmark, false));
    EXPECT_EQ(ConsentChoices::parseChange("processControl=yes"), Change(ConsentScope::processControl, true));
    for (const char* bad : {"benchmark", "benchmark=maybe", "teleport=on", "=on", ""})
        EXPECT_FALSE(ConsentChoices::parseChange(bad)) << bad;

    const auto ledger = ledgerAfter({{Action::accepted, {ConsentScope::readStorage, ConsentScope::benchmark}}});
    const auto scopes = ConsentChoices::withChanges(ledger, {{ConsentScope::diskOperations, true}});
    EXPECT_TRUE(scopes.at(ConsentScope::benchmark));
    EXPECT_TRUE(scopes.at(ConsentScope::diskOperations));
    EXPECT_FALSE(scopes.at(ConsentScope::processControl));
    EXPECT_EQ(scopes.size(), allCases<ConsentScope>().size());
    EXPECT_TRUE(ConsentChoices::forAcceptance({}).at(ConsentScope::readStorage));
}

}  // namespace
}  // namespace corvel
