#pragma once

#include <string>

#include <tessel/data/types.h>

namespace Tessel::Testing {

/// A regression tree in PMML: y is `low` for x < 0 and `high` otherwise.
inline WString regressionTree(double low, double high, const WString& name = L"Steps") {
    const WString lowText = std::to_wstring(low), highText = std::to_wstring(high);
    return LR"(<?xml version="1.0"?>
<PMML version="4.2" xmlns="http://www.dmg.org/PMML-4_2">
<Header description="TreeModel"><ModelName>)" +
           name +
           LR"(</ModelName></Header>
<DataDictionary numberOfFields="2">
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="y" optype="continuous" dataType="double"/>
</DataDictionary>
<TreeModel functionName="regression" algorithmName="DecisionTree" missingValueStrategy="defaultChild">
<MiningSchema>
<MiningField name="x" usageType="active"/><MiningField name="y" usageType="predicted"/>
</MiningSchema>
<Node id="1" score="0" recordCount="2" defaultChild="2"><True/>
<Node id="2" score=")" +
           lowText +
           LR"(" recordCount="1"><SimplePredicate field="x" operator="lessThan" value="0"/></Node>
<Node id="3" score=")" +
           highText +
           LR"(" recordCount="1"><SimplePredicate field="x" operator="greaterOrEqual" value="0"/></Node>
</Node>
</TreeModel>
</PMML>)";
}

/// The head of a PMML text of a model that is described but not there in full.
inline WString describedModel(const WString& element, const WString& function, const WString& algorithm,
                              const WString& miningFields) {
    return L"<PMML version=\"4.2\"><Header description=\"" + element +
           L"\"><ModelName>Described</ModelName></Header><DataDictionary>"
           L"<DataField name=\"a\" optype=\"continuous\" dataType=\"double\"/>"
           L"<DataField name=\"b\" optype=\"categorical\" dataType=\"string\"/></DataDictionary><" +
           element + L" functionName=\"" + function + L"\" algorithmName=\"" + algorithm +
           L"\"><MiningSchema>" + miningFields + L"</MiningSchema></" + element + L"></PMML>";
}

}  // namespace Tessel::Testing
