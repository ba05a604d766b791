#include <iostream>

#include <tessel/tessel.h>

// Builds a small table, takes rows and columns out of it, and shows that a copy is independent.
int main() {
    try {
        Tessel::DataFrame flowers(L"flowers");
        flowers.append(Tessel::DataFrameColumn(L"length", Tessel::Vector{5.1, 4.9, 6.3}));
        flowers.append(
            Tessel::DataFrameColumn(L"species", Tessel::StringVector{L"setosa", L"setosa", L"virginica"}));

        Tessel::DataFrame longest = flowers(Tessel::IntVector{2}, Tessel::Util::all);
        longest(0, L"length") = 6.4;

        for (int row = 0; row < flowers.getNumRows(); ++row) {
            std::cout << Tessel::Convert::toUtf8(flowers.getRowName(row)) << ": "
                      << flowers(row, L"length").toDouble() << ' '
                      << Tessel::Convert::toUtf8(flowers(row, L"species").toString()) << '\n';
        }
        std::cout << "changed copy: " << longest(0, L"length").toDouble() << '\n';
        return flowers(2, L"length").toDouble() == 6.3 ? 0 : 1;
    } catch (const Tessel::Exception& error) {
        std::cerr << "error " << error.code() << ": " << error.what() << '\n';
        return 1;
    }
}
