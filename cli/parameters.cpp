#include <algorithm>
#include <cmath>

#include "learners.h"

// Parameters set by texts. An estimator reads them from its `Ladon` text, where it passes over what it does
// not know; so names and values are checked here, against the estimator's own table of parameters.

namespace Tessel::Cli {
namespace {

WString lowerCase(WString text) {
    for (wchar_t& c : text)
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    return text;
}

StringVector cutAt(const WString& text, wchar_t separator) {
    StringVector parts;
    std::size_t begin = 0;
    for (std::size_t end = text.find(separator); end != WString::npos; end = text.find(separator, begin)) {
        parts.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    parts.push_back(text.substr(begin));
    return parts;
}

WString trimmed(const WString& text) {
    const std::size_t first = text.find_first_not_of(L' ');
    return first == WString::npos ? WString() : text.substr(first, text.find_last_not_of(L' ') - first + 1);
}

WString numberJSON(const WString& text) {
    const double number = Convert::toDouble(text);
    return std::isfinite(number) ? Convert::toString(number) : quoted(Convert::toString(number));
}

WString guessedJSON(const WString& text) {
    double number = 0.0;
    const bool isNumber = Convert::tryToDouble(Convert::toUtf8(text), number);
    return isNumber ? numberJSON(text) : quoted(text);
}

/// The member of the set "{FIRST, SECOND}" that is meant, whatever its case; else the text itself.
WString memberOf(const WString& set, const WString& text) {
    if (set.size() < 2) return text;
    for (const WString& member : cutAt(set.substr(1, set.size() - 2), L','))
        if (lowerCase(trimmed(member)) == lowerCase(text)) return trimmed(member);
    return text;
}

StringVector listOf(const WString& text, WString (*json)(const WString&)) {
    StringVector elements;
    for (const WString& element : cutAt(text, L',')) elements.push_back(json(trimmed(element)));
    return elements;
}

/// The member of a JSON object that "name:value" means.
WString namedJSON(const WString& text) {
    const std::size_t colon = text.rfind(L':');
    return quoted(trimmed(text.substr(0, colon))) + L":" + guessedJSON(trimmed(text.substr(colon + 1)));
}

/// What a value may mean as JSON; the estimator takes what is of its type. @throws ConversionFailure
StringVector meaningsOf(const ParameterInfo& parameter, const WString& value) {
    const WString& type = parameter.type;
    if (type == L"int") return {Convert::toString(Convert::toInt(value))};
    if (type == L"double") return {numberJSON(value)};
    if (type == L"WString") return {quoted(value)};
    if (type == L"enum") return {quoted(memberOf(parameter.admissibleValues, value))};
    if (!value.empty() && (value.front() == L'[' || value.front() == L'{')) return {value};
    StringVector meanings{guessedJSON(value), Util::join(listOf(value, quoted), L",", L"[", L"]"),
                          Util::join(listOf(value, guessedJSON), L",", L"[", L"]")};
    if (value.find(L':') != WString::npos)
        meanings.push_back(Util::join(listOf(value, namedJSON), L",", L"{", L"}"));
    return meanings;
}

/// The members of a `Ladon` text that tell what it describes.
StringVector identityOf(const Algorithm& algorithm) {
    return {quoted(Ladon::Keyword::OBJECT_TYPE) + L":" + quoted(Ladon::Keyword::ESTIMATOR),
            quoted(Ladon::Keyword::MODEL_TYPE) + L":" + quoted(algorithm.kind),
            quoted(Ladon::Keyword::MODEL_ALGORITHM) + L":" + quoted(algorithm.name)};
}

/// The member of "parameters" for one setting. The estimator tells whether it takes the value: it writes the
/// parameters that were set.
WString memberFor(const Algorithm& algorithm, const ParameterInfo& parameter, const WString& value) {
    const std::unique_ptr<Learner> trial = algorithm.makeLearner();
    const WString untouched = trial->estimator().toLadon();
    try {
        for (const WString& meaning : meaningsOf(parameter, value)) {
            const WString member = quoted(parameter.key) + L":" + meaning;
            StringVector members = identityOf(algorithm);
            members.push_back(quoted(Ladon::Keyword::PARAMETERS) + L":{" + member + L"}");
            trial->estimator().fromLadonString(Util::join(members, L",", L"{", L"}"));
            if (trial->estimator().toLadon() != untouched) return member;
        }
    } catch (const ConversionFailure&) {     // no number
    } catch (const UnsupportedJSONModel&) {  // written as JSON, but is none
    }
    throw notAValue(parameter, L"'" + value + L"'");
}

WString textOf(const Algorithm& algorithm, const EstimatorHandle& estimator, const Wishes& wishes);

/// The members of "parameters" for the wishes; parameters of learners are not looked at.
StringVector parameterMembers(const Algorithm& algorithm, const EstimatorHandle& estimator,
                              const Wishes& wishes) {
    const std::vector<ParameterInfo> parameters = parametersOf(estimator);
    StringVector keys, members;
    const auto add = [&](const ParameterInfo& parameter, const WString& value) {
        if (keys.exists(parameter.key))
            throw Failure("parameter " + Convert::toUtf8(parameter.key) + " is set twice");
        keys.push_back(parameter.key);
        members.push_back(memberFor(algorithm, parameter, value));
    };
    for (const Setting& setting : wishes.settings)
        if (setting.parameter.find(L'.') == WString::npos)
            add(parameterOf(parameters, algorithm, setting.parameter), setting.value);
    if (wishes.seed)
        for (const ParameterInfo& parameter : parameters)
            if (lowerCase(parameter.key).ends_with(L"seed") && !keys.exists(parameter.key))
                add(parameter, Convert::toString(*wishes.seed));
    return members;
}

/// The learners that are meant by the wishes for an algorithm that works through others.
StringVector learnersOf(const Algorithm& algorithm, const StringVector& wanted) {
    using enum Algorithm::Learners;
    const std::string name = Convert::toUtf8(algorithm.name);
    if (algorithm.learners == NONE && !wanted.empty()) throw Failure(name + " takes no --learner");
    if (algorithm.learners == ONE && wanted.size() > 1) throw Failure(name + " takes one --learner");
    if (!wanted.empty() || algorithm.learners == NONE) return wanted;
    if (algorithm.learners == ONE) return {Ladon::ModelAlgorithm::DECISION_TREE};
    StringVector all;
    for (const Algorithm& other : algorithms())
        if (other.kind == algorithm.kind && other.learners != SEVERAL) all.push_back(other.name);
    return all;
}

/// The settings of a learner, without its name in front.
std::vector<Setting> settingsFor(const WString& learner, const std::vector<Setting>& settings) {
    std::vector<Setting> own;
    for (const Setting& setting : settings)
        if (setting.parameter.starts_with(learner + L"."))
            own.push_back({setting.parameter.substr(learner.size() + 1), setting.value});
    return own;
}

/// The `Ladon` texts of the learners of an estimator.
StringVector learnerTexts(const Algorithm& algorithm, const Wishes& wishes) {
    const StringVector learners = learnersOf(algorithm, wishes.learners);
    for (const Setting& setting : wishes.settings) {
        const std::size_t dot = setting.parameter.find(L'.');
        if (dot != WString::npos && !learners.exists(setting.parameter.substr(0, dot)))
            throw Failure(Convert::toUtf8(algorithm.name + L" has no learner '" +
                                          setting.parameter.substr(0, dot) + L"' to set a parameter of"));
    }
    StringVector texts;
    for (const WString& name : learners) {
        const Algorithm& learner = algorithmOf(Convert::toUtf8(name), Convert::toUtf8(algorithm.kind));
        texts.push_back(textOf(learner, learner.makeLearner()->estimator(),
                               {settingsFor(name, wishes.settings), {}, wishes.seed}));
    }
    return texts;
}

/// The `Ladon` text of an estimator as it is wished.
WString textOf(const Algorithm& algorithm, const EstimatorHandle& estimator, const Wishes& wishes) {
    const StringVector texts = learnerTexts(algorithm, wishes);
    const WString parameters = Util::join(parameterMembers(algorithm, estimator, wishes), L",", L"{", L"}");
    StringVector members = identityOf(algorithm);
    members.push_back(quoted(Ladon::Keyword::PARAMETERS) + L":" + parameters);
    if (algorithm.learners == Algorithm::Learners::ONE)
        members.push_back(quoted(Ladon::Keyword::WEAK_LEARNER) + L":" + texts[0]);
    if (algorithm.learners == Algorithm::Learners::SEVERAL)
        members.push_back(quoted(Ladon::Keyword::LEARNERS) + L":" + Util::join(texts, L",", L"[", L"]"));
    return Util::join(members, L",", L"{", L"}");
}

}  // namespace

std::vector<Setting> settingsOf(const std::vector<std::string>& texts) {
    std::vector<Setting> settings;
    for (const std::string& text : texts) {
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos || equals == 0)
            throw Failure("--set takes parameter=value, not '" + text + "'");
        settings.push_back(
            {Convert::fromUtf8(text.substr(0, equals)), Convert::fromUtf8(text.substr(equals + 1))});
    }
    return settings;
}

WString quoted(const WString& text) {
    const WString array = StringVector{text}.toJson();
    return array.substr(1, array.size() - 2);
}

std::vector<ParameterInfo> parametersOf(const EstimatorHandle& estimator) {
    const DataFrameVector tables = estimator.toDataFrameVector();
    const DataFrame& table = tables.at(tables.size() - 1);
    const auto texts = [&](const wchar_t* column) { return table(Util::all, column).toStringVector(); };
    const StringVector keys = texts(L"Name"), types = texts(L"Type"), values = texts(L"Admissible Values");
    std::vector<ParameterInfo> parameters;
    for (std::size_t i = 0; i < keys.size(); ++i) parameters.push_back({keys[i], types[i], values[i]});
    return parameters;
}

const ParameterInfo& parameterOf(const std::vector<ParameterInfo>& parameters, const Algorithm& algorithm,
                                 const WString& key) {
    StringVector keys;
    for (const ParameterInfo& parameter : parameters) {
        if (lowerCase(parameter.key) == lowerCase(key)) return parameter;
        keys.push_back(parameter.key);
    }
    throw Failure(Convert::toUtf8(algorithm.name + L" has no parameter '" + key + L"'; its parameters are " +
                                  Util::join(keys, L", ")));
}

Failure notAValue(const ParameterInfo& parameter, const WString& what) {
    WString text =
        what + L" is no value of parameter " + parameter.key + L", which is of type " + parameter.type;
    if (!parameter.admissibleValues.empty()) text += L" and takes " + parameter.admissibleValues;
    return Failure(Convert::toUtf8(text));
}

void setParameters(const Algorithm& algorithm, EstimatorHandle& estimator, const Wishes& wishes) {
    const WString text = textOf(algorithm, estimator, wishes);
    try {
        estimator.fromLadonString(text);
    } catch (const Exception&) {  // all parameters were tried before
        throw Failure(Convert::toUtf8(algorithm.name) + " cannot take this --learner");
    }
}

}  // namespace Tessel::Cli
