#include "learners.h"

// Estimators from `Ladon` texts. Estimators pass over parameters that they do not know or whose values are
// not of their type; a user who misspells one shall hear of it.

namespace Tessel::Cli {
namespace {

/// The position behind a JSON string that begins at `begin`.
std::size_t endOfString(const WString& json, std::size_t begin) {
    std::size_t end = begin + 1;
    while (json[end] != L'"') end += json[end] == L'\\' ? 2u : 1u;
    return end + 1;
}

/// The texts of the elements of an array or of the members of an object, blanks around them left out.
/// @pre the text is well-formed JSON
StringVector partsOf(const WString& json) {
    constexpr const wchar_t* kBlanks = L" \t\r\n";
    StringVector parts;
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const wchar_t c = json[i];
        const bool isClosing = c == L'}' || c == L']', isOpening = c == L'{' || c == L'[';
        if (c == L'"') i = endOfString(json, i) - 1;
        if ((c == L',' && depth == 1) || (isClosing && depth == 1)) {
            const WString part = json.substr(begin, i - begin);
            const std::size_t first = part.find_first_not_of(kBlanks);
            if (first != WString::npos)
                parts.push_back(part.substr(first, part.find_last_not_of(kBlanks) - first + 1));
            begin = i + 1;
        }
        depth += isOpening - isClosing;
        if (isOpening && depth == 1) begin = i + 1;
    }
    return parts;
}

struct Member {
    WString name, value;
};
/// The members of an object, their values as texts. @pre the text is a well-formed JSON object
std::vector<Member> membersOf(const WString& json) {
    std::vector<Member> members;
    for (const WString& part : partsOf(json)) {
        const std::size_t end = endOfString(part, 0);
        StringVector name;
        name.fromJsonString(L"[" + part.substr(0, end) + L"]");
        members.push_back({name[0], part.substr(part.find(L':', end) + 1)});
    }
    return members;
}

/// The learner that the text describes, or null.
std::pair<const Algorithm*, std::unique_ptr<Learner>> readLearner(const WString& ladon) {
    for (const Algorithm& algorithm : algorithms()) {
        std::unique_ptr<Learner> learner = algorithm.makeLearner();
        try {
            learner->estimator().fromLadonString(ladon);
            return {&algorithm, std::move(learner)};
        } catch (const UnsupportedJSONModel&) {  // of another algorithm, or of none
        }
    }
    return {nullptr, nullptr};
}

void requireTaken(const Algorithm& algorithm, const EstimatorHandle& estimator, const WString& values) {
    const std::vector<ParameterInfo> parameters = parametersOf(estimator);
    // What was taken is written again.
    const WString taken = estimator.toLadon();
    for (const Member& member : membersOf(values)) {
        const ParameterInfo& parameter = parameterOf(parameters, algorithm, member.name);
        if (taken.find(quoted(parameter.key) + L":") == WString::npos)
            throw notAValue(parameter, L"'" + member.value + L"'");
    }
}

}  // namespace

std::pair<const Algorithm*, std::unique_ptr<Learner>> learnerOf(const WString& ladon,
                                                                const std::string& source) {
    std::pair<const Algorithm*, std::unique_ptr<Learner>> read;
    try {
        read = readLearner(ladon);
    } catch (const Exception& error) {
        throw Failure(source + ": " + error.what());
    }
    if (!read.first)
        throw Failure(source + ": is no Ladon text of an estimator; the algorithms are " + algorithmNames());
    for (const Member& member : membersOf(ladon)) {
        if (member.name == Ladon::Keyword::PARAMETERS)
            requireTaken(*read.first, read.second->estimator(), member.value);
        else if (member.name == Ladon::Keyword::WEAK_LEARNER)
            learnerOf(member.value, source);
        else if (member.name == Ladon::Keyword::LEARNERS)
            for (const WString& learner : partsOf(member.value)) learnerOf(learner, source);
    }
    return read;
}

}  // namespace Tessel::Cli
