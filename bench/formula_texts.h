// A selection and a column formula of ten operations each, and the same in Lua.
#ifndef QUILLON_BENCH_FORMULA_TEXTS_H
#define QUILLON_BENCH_FORMULA_TEXTS_H

namespace bench {

inline constexpr char kSelection[] =
    R"(SELECT (Form = "Memo":"Reply") & Amount > 100 & (Status != "Closed" | Priority >= 3) & Quantity * 2 < 50)";
inline constexpr char kColumn[] =
    R"(@If(Amount * Quantity - Discount > 1000; "Big "; "Small ") + Subject + " (" + Status + ") " + Owner + "!")";

// With the values in variables around the functions, and with values that are handed over.
inline constexpr char kLua[] = R"(
  local Form, Status, Subject, Owner = "Reply", "Open", "Quarterly figures of the north", "Ada King"
  local Amount, Quantity, Discount, Priority = 125.5, 12, 20, 2
  function Selection()
    return (Form == "Memo" or Form == "Reply") and Amount > 100 and (Status ~= "Closed" or Priority >= 3)
           and Quantity * 2 < 50
  end
  function Column()
    return (Amount * Quantity - Discount > 1000 and "Big " or "Small ") .. Subject .. " (" .. Status .. ") " ..
           Owner .. "!"
  end
  function SelectionOf(Form, Amount, Status, Priority, Quantity)
    return (Form == "Memo" or Form == "Reply") and Amount > 100 and (Status ~= "Closed" or Priority >= 3)
           and Quantity * 2 < 50
  end
  function ColumnOf(Amount, Quantity, Discount, Subject, Status, Owner)
    return (Amount * Quantity - Discount > 1000 and "Big " or "Small ") .. Subject .. " (" .. Status .. ") " ..
           Owner .. "!"
  end
)";

}  // namespace bench

#endif
