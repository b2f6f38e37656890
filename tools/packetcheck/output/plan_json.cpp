#include "output/plan_json.h"

#include "output/utf8.h"

#include <nlohmann/json.hpp>

namespace output {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

ordered_json Texts(const TextList& texts) {
    ordered_json list = ordered_json::array();
    for (const std::wstring& text : texts) {
        list.push_back(Utf8(text));
    }
    return list;
}

// An array made of what `make` makes of each entry.
template <typename Entries, typename Make>
ordered_json Each(const Entries& entries, Make make) {
    ordered_json list = ordered_json::array();
    for (const auto& entry : entries) {
        list.push_back(make(entry));
    }
    return list;
}

const char* NameOf(plan::Outcome outcome) {
    switch (outcome) {
    case plan::Outcome::Success:
        return "success";
    case plan::Outcome::Failure:
        return "failure";
    case plan::Outcome::ProcessEnds:
        return "process ends";
    case plan::Outcome::Endless:
        return "endless";
    }
    return "";
}

ordered_json InfJson(const plan::Inf& inf) {
    return {{"name", Utf8(inf.Name)},
            {"class", Utf8(inf.ClassName)},
            {"rank", inf.Rank},
            {"readable", inf.Readable},
            {"ids", Texts(inf.Ids)}};
}

ordered_json SettingJson(const plan::Setting& setting) {
    ordered_json result = {{"section", Utf8(setting.Section)},
                           {"key", Utf8(setting.Key)},
                           {"value", Utf8(setting.Value)}};
    result["from"] = setting.From.empty() ? ordered_json() : ordered_json(Utf8(setting.From));
    return result;
}

ordered_json PathEffect(const char* action, const rehearsal::Event& effect) {
    return {{"action", action}, {"path", Utf8(effect.Subject)}};
}

ordered_json ValueEffect(const char* action, const rehearsal::Event& effect) {
    return {{"action", action}, {"key", Utf8(effect.Subject)}, {"name", Utf8(effect.Object)}};
}

ordered_json EffectJson(const rehearsal::Event& effect) {
    ordered_json result;
    switch (effect.What) {
    case rehearsal::Deed::FileDeleted:
        return PathEffect("delete file", effect);
    case rehearsal::Deed::FileMade:
        return PathEffect("make file", effect);
    case rehearsal::Deed::FolderMade:
        return PathEffect("make folder", effect);
    case rehearsal::Deed::FileCopied:
        result = PathEffect("copy file", effect);
        result["to"] = Utf8(effect.Object);
        return result;
    case rehearsal::Deed::ValueSet:
        result = ValueEffect("set value", effect);
        result["data"] = Utf8(effect.Text);
        result["type"] = effect.Number;
        return result;
    case rehearsal::Deed::ValueDeleted:
        return ValueEffect("delete value", effect);
    case rehearsal::Deed::KeyDeleted:
        return {{"action", "delete key"}, {"key", Utf8(effect.Subject)}};
    default:
        return ValueEffect("read value", effect);
    }
}

ordered_json OperationJson(const plan::Operation& operation) {
    ordered_json result = {{"section", Utf8(operation.Section)},
                           {"key", Utf8(operation.Key)},
                           {"line", Utf8(operation.Line)},
                           {"filled", Utf8(operation.Filled)}};
    result["does"] = Each(operation.Effects, EffectJson);
    if (!operation.Refusal.empty()) {
        result["refused"] = Utf8(operation.Refusal);
    }
    return result;
}

ordered_json RunJson(const plan::Run& run) {
    ordered_json result = {{"outcome", NameOf(run.End)}, {"reason", Utf8(run.Reason)}};
    result["settings"] = Each(run.Settings, SettingJson);
    result["operations"] = Each(run.Operations, OperationJson);
    result["removes"] = {{"devices", Texts(run.Gone.DeviceIds)}, {"files", Texts(run.Gone.Files)}};
    result["waits"] = Each(run.Waits, [](const plan::Wait& wait) {
        return ordered_json{{"in", Utf8(wait.What)}, {"milliseconds", wait.Milliseconds}};
    });
    result["steps"] = Each(run.Steps, [](const plan::Step& step) {
        return ordered_json{{"title", Utf8(step.Title)}, {"details", Texts(step.Details)}};
    });
    result["log"] = Texts(run.Log);
    return result;
}

ordered_json PlanObject(const plan::Plan& plan) {
    ordered_json result = {{"generation", Utf8(plan.Generation)},
                           {"folder", Utf8(plan.Folder)},
                           {"run", plan.IsInstall ? "install" : "uninstall"},
                           {"mode", plan.Mode}};
    result["infs"] = Each(plan.Infs, InfJson);
    result["staging"] = Texts(plan.Staging);
    result["pairs"] = Each(plan.Pairs, [](const plan::Pair& pair) {
        return ordered_json{{"id", Utf8(pair.Id)}, {"inf", Utf8(pair.Inf)}};
    });
    result["expected"] = Each(plan.ExpectedCounts, [](const plan::Expected& expected) {
        return ordered_json{{"device", Utf8(expected.BaseId)},
                            {"functions", expected.Functions},
                            {"possible", expected.Possible}};
    });
    result.update(RunJson(plan.Main));
    result["worstCaseSeconds"] =
        plan.WorstCaseSeconds ? ordered_json(*plan.WorstCaseSeconds) : ordered_json();
    if (plan.Rollback) {
        result["rollback"] = RunJson(*plan.Rollback);
    }
    if (plan.Uninstall) {
        result["uninstall"] = RunJson(*plan.Uninstall);
    }
    return result;
}

} // namespace

std::string PlanJson(const std::vector<plan::Plan>& plans) {
    const ordered_json result =
        plans.size() == 1 ? PlanObject(plans.front()) : Each(plans, PlanObject);
    // Invalid UTF-16 of a file must not end the tool.
    return result.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
}

} // namespace output
