#pragma once

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace QRT_0_81 {

/// A trace that was read back.
///
/// Everything is checked on the way that holds for all traces: it is an array of events, each has what its kind needs,
/// and the spans of a thread lie in each other or behind each other.
class TraceDocument final {
public:
    struct Event {
        char phase;
        std::string name;
        int64_t thread;
        int64_t begin;     // nanoseconds
        int64_t duration;  // of a span
        std::map<std::string, int64_t> numbers;
        std::map<std::string, std::string> texts;

        [[nodiscard]] int64_t end() const { return begin + duration; }
        [[nodiscard]] int64_t number(std::string const& key) const {
            const auto found = numbers.find(key);
            return found == numbers.end() ? INT64_MIN : found->second;
        }
        /// On the same thread, and in its time.
        [[nodiscard]] bool contains(Event const& other) const {
            return thread == other.thread && begin <= other.begin && other.end() <= end();
        }
    };
    using Events = std::vector<Event>;

    explicit TraceDocument(std::string const& text) {
        rapidjson::Document document;
        document.Parse(text.c_str());
        if (document.HasParseError()) {
            ADD_FAILURE() << rapidjson::GetParseError_En(document.GetParseError()) << " at "
                          << document.GetErrorOffset() << " of\n"
                          << text;
            return;
        }
        EXPECT_TRUE(document.IsArray());
        for (auto const& value : document.GetArray())
            m_events.push_back(eventOf(value));
        checkNesting();
    }

    /// The whole file.
    [[nodiscard]] static std::string textOf(std::string const& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    [[nodiscard]] Events const& events() const { return m_events; }
    /// In the order in which they ended.
    [[nodiscard]] Events spans(std::string const& name) const { return select('X', name); }
    /// In the order in which they were told.
    [[nodiscard]] Events counts(std::string const& name) const { return select('C', name); }
    /// The names of spans of a thread in the order in which they began.
    [[nodiscard]] std::vector<std::string> namesOf(int64_t thread, std::string const& prefix = "") const {
        Events all;
        for (Event const& event : m_events) {
            if (event.phase == 'X' && event.thread == thread && event.name.rfind(prefix, 0) == 0) all.push_back(event);
        }
        std::stable_sort(all.begin(), all.end(), [](Event const& a, Event const& b) { return a.begin < b.begin; });
        std::vector<std::string> names;
        for (Event const& event : all)
            names.push_back(event.name);
        return names;
    }
    /// The threads of that name, in the order in which they got it.
    [[nodiscard]] std::vector<int64_t> threads(std::string const& name) const {
        std::vector<int64_t> found;
        for (Event const& event : select('M', "thread_name")) {
            if (event.texts.at("name") == name) found.push_back(event.thread);
        }
        return found;
    }

private:
    [[nodiscard]] Events select(char phase, std::string const& name) const {
        Events found;
        std::copy_if(m_events.begin(), m_events.end(), std::back_inserter(found),
                     [&](Event const& event) { return event.phase == phase && event.name == name; });
        return found;
    }

    static int64_t nanoseconds(rapidjson::Value const& object, char const* key) {
        EXPECT_TRUE(object.HasMember(key) && object[key].IsNumber()) << key;
        return object.HasMember(key) ? std::llround(object[key].GetDouble() * 1000) : 0;
    }

    static Event eventOf(rapidjson::Value const& value) {
        Event event{value["ph"].GetString()[0], value["name"].GetString(), value["tid"].GetInt64(), 0, 0, {}, {}};
        EXPECT_TRUE(value["pid"].IsInt64());
        if (event.phase != 'M') event.begin = nanoseconds(value, "ts");
        if (event.phase == 'X') event.duration = nanoseconds(value, "dur");
        EXPECT_GE(event.duration, 0);
        if (!value.HasMember("args")) return event;
        for (auto const& argument : value["args"].GetObject()) {
            if (argument.value.IsString())
                event.texts[argument.name.GetString()] = argument.value.GetString();
            else
                event.numbers[argument.name.GetString()] = argument.value.GetInt64();
        }
        return event;
    }

    void checkNesting() const {
        std::map<int64_t, Events> byThread;
        for (Event const& event : m_events) {
            if (event.phase == 'X') byThread[event.thread].push_back(event);
        }
        for (auto& [thread, spans] : byThread) {
            std::stable_sort(spans.begin(), spans.end(), [](Event const& a, Event const& b) {
                return std::pair(a.begin, -a.duration) < std::pair(b.begin, -b.duration);
            });
            Events open;
            for (Event const& span : spans) {
                while (!open.empty() && open.back().end() <= span.begin)
                    open.pop_back();
                EXPECT_TRUE(open.empty() || open.back().contains(span))
                    << span.name << " at " << span.begin << " overlaps " << open.back().name << " of thread " << thread;
                open.push_back(span);
            }
        }
    }

    Events m_events;
};

}  // namespace QRT_0_81
