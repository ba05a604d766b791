/* A host in plain C: scores the model of loan_tree.pmml and releases everything. Run under valgrind, too.
   usage: host MODEL.pmml
   The expected results follow from the tree in the file: income < 30 asks for the home, where renting tells
   7 of 8 "no" and owning 3 of 4 "yes"; a higher income tells 7 of 8 "yes". */

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <tessel/scoring/capi/tessel_c.h>

static int numFailures = 0;

static void expect(int condition, const char* what, int line) {
    if (condition) return;
    fprintf(stderr, "line %d: %s (%ls)\n", line, what, TSLSDK_LastErrorText());
    ++numFailures;
}
#define EXPECT(condition) expect((condition), #condition, __LINE__)

/* An ASCII file as a wide text, to be freed. */
static wchar_t* readFile(const char* path) {
    FILE* file = fopen(path, "rb");
    wchar_t* text = NULL;
    size_t size = 0, capacity = 0;
    int byte;
    if (!file) return NULL;
    do {
        byte = fgetc(file);
        if (size == capacity) {
            wchar_t* grown = realloc(text, (capacity = 2 * capacity + 1024) * sizeof(wchar_t));
            if (!grown) abort();
            text = grown;
        }
        text[size++] = byte == EOF ? L'\0' : (wchar_t)byte;
    } while (byte != EOF);
    fclose(file);
    return text;
}

static const double kNumbers[] = {29.5, 40, 10, 20, 30, 30};
static const wchar_t* const kHomes[] = {L"rents", L"owns", L"rents"};
static const wchar_t* const kNames[] = {L"income", L"age", L"home"};
static const Tessel_DoubleArray numbers = {kNumbers, 6};
static const Tessel_StringArray homes = {kHomes, 3};
static const Tessel_StringArray names = {kNames, 3};

static void predicts(const wchar_t* model) {
    static const wchar_t* const expected[] = {L"no", L"yes", L"yes"};
    TSLSDK_DoubleArray* resultNumbers;
    TSLSDK_StringArray *resultNames, *resultTexts;
    uint64_t i;
    EXPECT(iTessel_Predict(model, 3, &numbers, &homes, &names, &resultNumbers, &resultNames, &resultTexts) ==
           TESSEL_OK);
    EXPECT(TSLSDK_LastErrorText()[0] == L'\0');
    EXPECT(TSLSDK_DoubleArraySize(resultNumbers) == 0);
    EXPECT(TSLSDK_StringArraySize(resultNames) == 1);
    EXPECT(TSLSDK_StringArraySize(resultTexts) == 3);
    for (i = 0; i < TSLSDK_StringArraySize(resultTexts); ++i)
        EXPECT(wcscmp(TSLSDK_StringArrayData(resultTexts)[i], expected[i]) == 0);
    TSLSDK_DeleteDoubleArray(resultNumbers);
    TSLSDK_DeleteStringArray(resultNames);
    TSLSDK_DeleteStringArray(resultTexts);
}

static void tellsProbabilities(const wchar_t* model) {
    static const double expected[] = {0.125, 0.875, 0.75, 0.25, 0.875, 0.125};
    TSLSDK_DoubleArray* probabilities;
    EXPECT(iTessel_Posteriors(model, 3, &numbers, &homes, &names, &probabilities) == TESSEL_OK);
    EXPECT(TSLSDK_DoubleArraySize(probabilities) == 6 &&
           memcmp(TSLSDK_DoubleArrayData(probabilities), expected, sizeof(expected)) == 0);
    TSLSDK_DeleteDoubleArray(probabilities);
}

static void describes(const wchar_t* model) {
    TSLSDK_String* json;
    EXPECT(Tessel_PMMLModelVarsJSON(model, &json, 0) == TESSEL_OK);
    EXPECT(wcscmp(TSLSDK_StringText(json),
                  L"{\"variables\":[{\"name\":\"income\",\"type\":\"continuous\"},{\"name\":\"age\",\"type\":"
                  L"\"continuous\"},{\"name\":\"home\",\"type\":\"categorical\"}]}") == 0);
    EXPECT(TSLSDK_StringLength(json) == wcslen(TSLSDK_StringText(json)));
    TSLSDK_DeleteString(json);
    EXPECT(Tessel_PMMLModelVarsJSON(model, &json, 1) == TESSEL_OK);
    EXPECT(wcsncmp(TSLSDK_StringText(json),
                   L"{\"modelName\":\"Loans\",\"type\":\"classification\",\"algorithm\":\"DecisionTree\","
                   L"\"targetName\":\"paid\",\"classes\":[\"yes\",\"no\"],\"variables\":[",
                   125) == 0);
    TSLSDK_DeleteString(json);
}

static void failsCleanly(const wchar_t* model) {
    TSLSDK_DoubleArray* resultNumbers;
    TSLSDK_StringArray *resultNames, *resultTexts;
    Tessel_Model* loaded;
    EXPECT(iTessel_Predict(model, 0, NULL, NULL, NULL, &resultNumbers, &resultNames, &resultTexts) ==
           TESSEL_SIZE_MISMATCH);
    EXPECT(resultNumbers && resultNames && resultTexts);
    EXPECT(TSLSDK_StringArraySize(resultTexts) == 0 && TSLSDK_LastErrorText()[0] != L'\0');
    TSLSDK_DeleteDoubleArray(resultNumbers);
    TSLSDK_DeleteStringArray(resultNames);
    TSLSDK_DeleteStringArray(resultTexts);
    EXPECT(iTessel_Transform(model, 3, &numbers, &homes, &names, &resultNumbers, NULL, NULL) ==
           TESSEL_REFUSED);
    TSLSDK_DeleteDoubleArray(resultNumbers);
    EXPECT(iTessel_Forecast(model, &numbers, 2, &resultNumbers) == TESSEL_REFUSED);
    TSLSDK_DeleteDoubleArray(resultNumbers);
    EXPECT(Tessel_LoadModel(L"<PMML", &loaded) == TESSEL_UNREADABLE && !loaded);
}

static void acceptsNull(void) {
    TSLSDK_DeleteString(NULL);
    TSLSDK_DeleteStringArray(NULL);
    TSLSDK_DeleteDoubleArray(NULL);
    Tessel_FreeModel(NULL);
    EXPECT(!Tessel_LoadedText(NULL) && TSLSDK_StringText(NULL)[0] == L'\0' && TSLSDK_StringLength(NULL) == 0);
    EXPECT(!TSLSDK_DoubleArrayData(NULL) && TSLSDK_DoubleArraySize(NULL) == 0);
    EXPECT(!TSLSDK_StringArrayData(NULL) && TSLSDK_StringArraySize(NULL) == 0);
}

int main(int argc, char** argv) {
    wchar_t* text = argc == 2 ? readFile(argv[1]) : NULL;
    Tessel_Model* model;
    if (!text) {
        fprintf(stderr, "usage: host MODEL.pmml\n");
        return 2;
    }
    predicts(text);
    tellsProbabilities(text);
    describes(text);
    failsCleanly(text);
    EXPECT(Tessel_LoadModel(text, &model) == TESSEL_OK);
    free(text); /* the loaded model has its own */
    predicts(Tessel_LoadedText(model));
    tellsProbabilities(Tessel_LoadedText(model));
    Tessel_FreeModel(model);
    acceptsNull();
    return numFailures == 0 ? 0 : 1;
}
