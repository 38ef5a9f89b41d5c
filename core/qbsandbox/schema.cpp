// SPDX-License-Identifier: GPL-3.0-or-later
#include "qbsandbox/schema.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <unordered_map>

#include "qbsandbox/values.h"

namespace dorvane::qbsandbox {

namespace {

// The order tables, one aggregate per entry: `Name = Child Child ...`. A child is written
// `Name[:type][?|*|+][@since][!until][#gN]`: no type means an aggregate described under its
// own name; `?` optional, `*` any number, `+` one or more; `@20` = since qbXML 2.0, `!60` =
// gone from 6.0; `#a1`/`#a2` = branches of an optional choice (`#A1` for a required one);
// `~` = interleaved repeating alternatives (line kinds that may alternate freely). An element
// that moved between versions is listed at both places (VendorRet's Notes: `!30`, then `@30`).
// Types: id s s41 date dt amt price qty pct bool int dur guid ref addr e.EnumName.
const char* const kTables = R"(
TxnDateRangeFilter = FromTxnDate:date?#a1 ToTxnDate:date?#a1 DateMacro:e.DateMacro#a2
ModifiedDateRangeFilter = FromModifiedDate:dt? ToModifiedDate:dt?
EntityFilter = ListID:id+@20#A1 FullName:s+#A2 ListIDWithChildren:id@20#A3 FullNameWithChildren:s#A4
AccountFilter = ListID:id+@20#A1 FullName:s+#A2 ListIDWithChildren:id@20#A3 FullNameWithChildren:s#A4
TimeTrackingEntityFilter = ListID:id+#A1 FullName:s+#A2 ListIDWithChildren:id@20#A3 FullNameWithChildren:s#A4
CurrencyFilter = ListID:id+#A1 FullName:s+#A2
RefNumberFilter = MatchCriterion:e.MatchCriterion RefNumber:s
RefNumberRangeFilter = FromRefNumber:s? ToRefNumber:s?
NameFilter = MatchCriterion:e.MatchCriterion Name:s
NameRangeFilter = FromName:s? ToName:s?
TotalBalanceFilter = Operator:e.Operator Amount:amt

TimeTrackingQueryRq = TxnID:id+#a1 MaxReturned:int?#a2 ModifiedDateRangeFilter?#a2 TxnDateRangeFilter?#a2
  TimeTrackingEntityFilter?#a2 IncludeRetElement:s*@40
CompanyQueryRq = IncludeRetElement:s*@40 OwnerID:guid*@20
PreferencesQueryRq = IncludeRetElement:s*@40
HostQueryRq = IncludeRetElement:s*@40
TxnDelRq = TxnDelType:e.TxnDelType TxnID:id

AccountAdd = Name:s31 IsActive:bool? ParentRef:ref? AccountType:e.AccountType AccountNumber:s7?
  BankNumber:s25? Desc:s200? OpenBalance:amt? OpenBalanceDate:date? TaxLineID:int?@30 CurrencyRef:ref?@80
SalesOrPurchase = Desc:s4095? Price:price?#a1 PricePercent:pct?#a2 AccountRef:ref?
SalesAndPurchase = SalesDesc:s4095? SalesPrice:price? IncomeAccountRef:ref? PurchaseDesc:s4095?
  PurchaseCost:price? ExpenseAccountRef:ref? PrefVendorRef:ref?
ItemServiceAdd = Name:s31 IsActive:bool? ParentRef:ref? UnitOfMeasureSetRef:ref?@70 SalesTaxCodeRef:ref?
  SalesOrPurchase#A1 SalesAndPurchase#A2 ExternalGUID:guid?@90
ItemNonInventoryAdd = Name:s31 IsActive:bool? ParentRef:ref? UnitOfMeasureSetRef:ref?@70 SalesTaxCodeRef:ref?
  SalesOrPurchase#A1 SalesAndPurchase#A2 ExternalGUID:guid?@90
ItemOtherChargeAdd = Name:s31 IsActive:bool? ParentRef:ref? SalesTaxCodeRef:ref?
  SalesOrPurchase#A1 SalesAndPurchase#A2 ExternalGUID:guid?@90
ItemGroupAdd = Name:s31 IsActive:bool? ItemDesc:s4095? UnitOfMeasureSetRef:ref?@70 IsPrintItemsInGroup:bool?
  ExternalGUID:guid?@90 ItemGroupLine*
ItemGroupLine = ItemRef:ref? Quantity:qty? UnitOfMeasure:s31?@70
VendorAdd = Name:s41 IsActive:bool? CompanyName:s41? Salutation:s15? FirstName:s25? MiddleName:s5?
  LastName:s25? VendorAddress:addr? Phone:s21? AltPhone:s21? Fax:s21? Email:s1023? Contact:s41?
  AltContact:s41? NameOnCheck:s41? AccountNumber:s99? Notes:s4095?@30 VendorTypeRef:ref? TermsRef:ref?
  CreditLimit:amt? VendorTaxIdent:s15? IsVendorEligibleFor1099:bool? OpenBalance:amt? OpenBalanceDate:date?
  ExternalGUID:guid?@90
CustomerAdd = Name:s41 IsActive:bool? ParentRef:ref? CompanyName:s41? Salutation:s15? FirstName:s25?
  MiddleName:s5? LastName:s25? BillAddress:addr? ShipAddress:addr? Phone:s21? AltPhone:s21? Fax:s21?
  Email:s1023? Contact:s41? AltContact:s41? CustomerTypeRef:ref? TermsRef:ref? SalesRepRef:ref?
  OpenBalance:amt? OpenBalanceDate:date? SalesTaxCodeRef:ref? ItemSalesTaxRef:ref? ResaleNumber:s15?
  AccountNumber:s99? CreditLimit:amt? PreferredPaymentMethodRef:ref?@30 JobStatus:e.JobStatus?
  JobStartDate:date? JobProjectedEndDate:date? JobEndDate:date? JobDesc:s99? JobTypeRef:ref?
  Notes:s4095?@30 ExternalGUID:guid?@90
EmployeeAdd = IsActive:bool? Salutation:s15? FirstName:s25? MiddleName:s5? LastName:s25?
  EmployeeAddress:addr? PrintAs:s41? Phone:s21? Mobile:s21? Pager:s21? PagerPIN:s10? AltPhone:s21?
  Fax:s21? SSN:s11? Email:s1023? EmployeeType:e.EmployeeType? Gender:e.Gender? HiredDate:date?
  ReleasedDate:date? BirthDate:date? AccountNumber:s99? Notes:s4095? ExternalGUID:guid?@90

InvoiceAdd = CustomerRef:ref ClassRef:ref? ARAccountRef:ref? TemplateRef:ref?@30 TxnDate:date?
  RefNumber:s11? BillAddress:addr? ShipAddress:addr? IsPending:bool? PONumber:s25? TermsRef:ref?
  DueDate:date? SalesRepRef:ref? FOB:s13? ShipDate:date? ShipMethodRef:ref? ItemSalesTaxRef:ref?
  Memo:s4095? CustomerMsgRef:ref? IsToBePrinted:bool? IsToBeEmailed:bool?@60 CustomerSalesTaxCodeRef:ref?
  Other:s29?@60 ExternalGUID:guid?@90 InvoiceLineAdd~ InvoiceLineGroupAdd~
InvoiceLineAdd = ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70 Rate:price?#a1
  RatePercent:pct?#a2 PriceLevelRef:ref?@40#a3 ClassRef:ref? Amount:amt? ServiceDate:date?
  SalesTaxCodeRef:ref? OverrideItemAccountRef:ref?@20 Other1:s29?@60 Other2:s29?@60
InvoiceLineGroupAdd = ItemGroupRef:ref Quantity:qty? UnitOfMeasure:s31?@70
EstimateAdd = CustomerRef:ref ClassRef:ref? TemplateRef:ref?@30 TxnDate:date? RefNumber:s11?
  BillAddress:addr? ShipAddress:addr?@70 IsActive:bool?@30 PONumber:s25? TermsRef:ref? DueDate:date?
  SalesRepRef:ref? FOB:s13? ItemSalesTaxRef:ref? Memo:s4095? CustomerMsgRef:ref? IsToBeEmailed:bool?@60
  CustomerSalesTaxCodeRef:ref? Other:s29?@60 ExternalGUID:guid?@90 EstimateLineAdd~ EstimateLineGroupAdd~
EstimateLineAdd = ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70 Rate:price?#a1
  RatePercent:pct?#a2 ClassRef:ref? Amount:amt? SalesTaxCodeRef:ref? MarkupRate:price?#b1
  MarkupRatePercent:pct?#b2 OverrideItemAccountRef:ref?@20 Other1:s29?@60 Other2:s29?@60
EstimateLineGroupAdd = ItemGroupRef:ref Quantity:qty? UnitOfMeasure:s31?@70
CreditMemoAdd = CustomerRef:ref ClassRef:ref? ARAccountRef:ref? TemplateRef:ref?@30 TxnDate:date?
  RefNumber:s11? BillAddress:addr? ShipAddress:addr? IsPending:bool? PONumber:s25? TermsRef:ref?
  DueDate:date? SalesRepRef:ref? FOB:s13? ShipDate:date? ShipMethodRef:ref? ItemSalesTaxRef:ref?
  Memo:s4095? CustomerMsgRef:ref? IsToBePrinted:bool? IsToBeEmailed:bool?@60 CustomerSalesTaxCodeRef:ref?
  Other:s29?@60 ExternalGUID:guid?@90 CreditMemoLineAdd~ CreditMemoLineGroupAdd~
CreditMemoLineAdd = ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70 Rate:price?#a1
  RatePercent:pct?#a2 PriceLevelRef:ref?@40#a3 ClassRef:ref? Amount:amt? ServiceDate:date?
  SalesTaxCodeRef:ref? OverrideItemAccountRef:ref?@20 Other1:s29?@60 Other2:s29?@60
CreditMemoLineGroupAdd = ItemGroupRef:ref Quantity:qty? UnitOfMeasure:s31?@70
SalesReceiptAdd = CustomerRef:ref? ClassRef:ref? TemplateRef:ref?@30 TxnDate:date? RefNumber:s11?
  BillAddress:addr? ShipAddress:addr? IsPending:bool? CheckNumber:s25? PaymentMethodRef:ref?
  DueDate:date? SalesRepRef:ref? ShipDate:date? ShipMethodRef:ref? FOB:s13? ItemSalesTaxRef:ref?
  Memo:s4095? CustomerMsgRef:ref? IsToBePrinted:bool? IsToBeEmailed:bool?@60
  CustomerSalesTaxCodeRef:ref? DepositToAccountRef:ref? Other:s29?@60 ExternalGUID:guid?@90
  SalesReceiptLineAdd~ SalesReceiptLineGroupAdd~
SalesReceiptLineAdd = ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70 Rate:price?#a1
  RatePercent:pct?#a2 PriceLevelRef:ref?@40#a3 ClassRef:ref? Amount:amt? ServiceDate:date?
  SalesTaxCodeRef:ref? OverrideItemAccountRef:ref?@20 Other1:s29?@60 Other2:s29?@60
SalesReceiptLineGroupAdd = ItemGroupRef:ref Quantity:qty? UnitOfMeasure:s31?@70
BillAdd = VendorRef:ref APAccountRef:ref?@20 TxnDate:date? DueDate:date? RefNumber:s20? TermsRef:ref?
  Memo:s4095? ExternalGUID:guid?@90 LinkToTxnID:id*@40 ExpenseLineAdd* ItemLineAdd~ ItemGroupLineAdd~
ExpenseLineAdd = AccountRef:ref? Amount:amt? Memo:s4095? CustomerRef:ref? ClassRef:ref?
  BillableStatus:e.BillableStatus?@20
ItemLineAdd = ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70 Cost:price? Amount:amt?
  CustomerRef:ref? ClassRef:ref? BillableStatus:e.BillableStatus?@20 OverrideItemAccountRef:ref?@20
ItemGroupLineAdd = ItemGroupRef:ref Quantity:qty? UnitOfMeasure:s31?@70
PurchaseOrderAdd = VendorRef:ref? ClassRef:ref? ShipToEntityRef:ref? TemplateRef:ref?@30 TxnDate:date?
  RefNumber:s11? VendorAddress:addr? ShipAddress:addr? TermsRef:ref? DueDate:date? ExpectedDate:date?
  ShipMethodRef:ref? FOB:s13? Memo:s4095? VendorMsg:s99? IsToBePrinted:bool? IsToBeEmailed:bool?@60
  Other1:s25?@60 Other2:s29?@60 ExternalGUID:guid?@90 PurchaseOrderLineAdd~ PurchaseOrderLineGroupAdd~
PurchaseOrderLineAdd = ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70 Rate:price?
  ClassRef:ref? Amount:amt? CustomerRef:ref? ServiceDate:date? OverrideItemAccountRef:ref?@20
  Other1:s29?@60 Other2:s29?@60
PurchaseOrderLineGroupAdd = ItemGroupRef:ref Quantity:qty? UnitOfMeasure:s31?@70
CheckAdd = AccountRef:ref PayeeEntityRef:ref? RefNumber:s11? TxnDate:date? Memo:s4095? Address:addr?
  IsToBePrinted:bool? ExternalGUID:guid?@90 ExpenseLineAdd* ItemLineAdd~ ItemGroupLineAdd~
CreditCardChargeAdd = AccountRef:ref PayeeEntityRef:ref? TxnDate:date? RefNumber:s11? Memo:s4095?
  ExternalGUID:guid?@90 ExpenseLineAdd* ItemLineAdd~ ItemGroupLineAdd~
ReceivePaymentAdd = CustomerRef:ref ARAccountRef:ref? TxnDate:date? RefNumber:s20? TotalAmount:amt?
  PaymentMethodRef:ref? Memo:s4095? DepositToAccountRef:ref? ExternalGUID:guid?@90 IsAutoApply:bool#a1
  AppliedToTxnAdd+#a2
AppliedToTxnAdd = TxnID:id PaymentAmount:amt? DiscountAmount:amt? DiscountAccountRef:ref?
TimeTrackingAdd = TxnDate:date? EntityRef:ref CustomerRef:ref? ItemServiceRef:ref? Rate:price? Duration:dur
  ClassRef:ref? PayrollItemWageRef:ref? Notes:s4095? IsBillable:bool? BillableStatus:e.BillableStatus?@60
  ExternalGUID:guid?@90

LinkedTxn = TxnID:id TxnType:e.TxnType TxnDate:date RefNumber:s20? LinkType:e.LinkType?@30 Amount:amt
InvoiceRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int? CustomerRef:ref
  ClassRef:ref? ARAccountRef:ref? TemplateRef:ref?@30 TxnDate:date RefNumber:s11? BillAddress:addr?
  ShipAddress:addr? IsPending:bool? IsFinanceCharge:bool? PONumber:s25? TermsRef:ref? DueDate:date?
  SalesRepRef:ref? FOB:s13? ShipDate:date? ShipMethodRef:ref? Subtotal:amt? ItemSalesTaxRef:ref?
  SalesTaxPercentage:pct? SalesTaxTotal:amt? AppliedAmount:amt? BalanceRemaining:amt? Memo:s4095?
  IsPaid:bool?@20 CustomerMsgRef:ref? IsToBePrinted:bool? IsToBeEmailed:bool?@60
  CustomerSalesTaxCodeRef:ref? SuggestedDiscountAmount:amt? SuggestedDiscountDate:date? Other:s29?@60
  ExternalGUID:guid?@90 LinkedTxn*@11 InvoiceLineRet~ InvoiceLineGroupRet~
InvoiceLineRet = TxnLineID:id ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70 Rate:price?#a1
  RatePercent:pct?#a2 ClassRef:ref? Amount:amt? ServiceDate:date? SalesTaxCodeRef:ref? Other1:s29?@60
  Other2:s29?@60
InvoiceLineGroupRet = TxnLineID:id@21 ItemGroupRef:ref Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70
  IsPrintItemsInGroup:bool TotalAmount:amt InvoiceLineRet*
EstimateRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int? CustomerRef:ref
  ClassRef:ref? TemplateRef:ref?@30 TxnDate:date RefNumber:s11? BillAddress:addr? ShipAddress:addr?@70
  IsActive:bool?@30 PONumber:s25? TermsRef:ref? DueDate:date? SalesRepRef:ref? FOB:s13? Subtotal:amt?
  ItemSalesTaxRef:ref? SalesTaxPercentage:pct? SalesTaxTotal:amt? TotalAmount:amt? Memo:s4095?
  CustomerMsgRef:ref? IsToBeEmailed:bool?@60 CustomerSalesTaxCodeRef:ref? Other:s29?@60
  ExternalGUID:guid?@90 LinkedTxn*@30 EstimateLineRet~ EstimateLineGroupRet~
EstimateLineRet = TxnLineID:id ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70
  Rate:price?#a1 RatePercent:pct?#a2 ClassRef:ref? Amount:amt? SalesTaxCodeRef:ref? MarkupRate:price?#b1
  MarkupRatePercent:pct?#b2 Other1:s29?@60 Other2:s29?@60
EstimateLineGroupRet = TxnLineID:id@21 ItemGroupRef:ref Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70
  IsPrintItemsInGroup:bool TotalAmount:amt EstimateLineRet*
SalesReceiptRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int? CustomerRef:ref?
  ClassRef:ref? TemplateRef:ref?@30 TxnDate:date RefNumber:s11? BillAddress:addr? ShipAddress:addr?
  IsPending:bool? CheckNumber:s25? PaymentMethodRef:ref? DueDate:date? SalesRepRef:ref? ShipDate:date?
  ShipMethodRef:ref? FOB:s13? Subtotal:amt? ItemSalesTaxRef:ref? SalesTaxPercentage:pct?
  SalesTaxTotal:amt? TotalAmount:amt? Memo:s4095? CustomerMsgRef:ref? IsToBePrinted:bool?
  IsToBeEmailed:bool?@60 CustomerSalesTaxCodeRef:ref? DepositToAccountRef:ref? Other:s29?@60
  ExternalGUID:guid?@90 SalesReceiptLineRet~ SalesReceiptLineGroupRet~
SalesReceiptLineRet = TxnLineID:id ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70
  Rate:price?#a1 RatePercent:pct?#a2 ClassRef:ref? Amount:amt? ServiceDate:date? SalesTaxCodeRef:ref?
  Other1:s29?@60 Other2:s29?@60
SalesReceiptLineGroupRet = TxnLineID:id@21 ItemGroupRef:ref Desc:s4095? Quantity:qty?
  UnitOfMeasure:s31?@70 IsPrintItemsInGroup:bool TotalAmount:amt SalesReceiptLineRet*
CreditMemoRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int? CustomerRef:ref
  ClassRef:ref? ARAccountRef:ref? TemplateRef:ref?@30 TxnDate:date RefNumber:s11? BillAddress:addr?
  ShipAddress:addr? IsPending:bool? PONumber:s25? TermsRef:ref? DueDate:date? SalesRepRef:ref? FOB:s13?
  ShipDate:date? ShipMethodRef:ref? Subtotal:amt? ItemSalesTaxRef:ref? SalesTaxPercentage:pct?
  SalesTaxTotal:amt? TotalAmount:amt? CreditRemaining:amt?@20 Memo:s4095? CustomerMsgRef:ref?
  IsToBePrinted:bool? IsToBeEmailed:bool?@60 CustomerSalesTaxCodeRef:ref? Other:s29?@60
  ExternalGUID:guid?@90 LinkedTxn*@11 CreditMemoLineRet~ CreditMemoLineGroupRet~
CreditMemoLineRet = TxnLineID:id ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70
  Rate:price?#a1 RatePercent:pct?#a2 ClassRef:ref? Amount:amt? ServiceDate:date? SalesTaxCodeRef:ref?
  Other1:s29?@60 Other2:s29?@60
CreditMemoLineGroupRet = TxnLineID:id@21 ItemGroupRef:ref Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70
  IsPrintItemsInGroup:bool TotalAmount:amt CreditMemoLineRet*
PurchaseOrderRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int? VendorRef:ref?
  ClassRef:ref? ShipToEntityRef:ref? TemplateRef:ref?@30 TxnDate:date RefNumber:s11? VendorAddress:addr?
  ShipAddress:addr? TermsRef:ref? DueDate:date? ExpectedDate:date? ShipMethodRef:ref? FOB:s13?
  TotalAmount:amt? IsManuallyClosed:bool?@21 IsFullyReceived:bool?@21 Memo:s4095? VendorMsg:s99?
  IsToBePrinted:bool? IsToBeEmailed:bool?@60 Other1:s25?@60 Other2:s29?@60 ExternalGUID:guid?@90
  LinkedTxn*@30 PurchaseOrderLineRet~ PurchaseOrderLineGroupRet~
PurchaseOrderLineRet = TxnLineID:id ItemRef:ref? ManufacturerPartNumber:s31?@70 Desc:s4095? Quantity:qty?
  UnitOfMeasure:s31?@70 Rate:price? ClassRef:ref? Amount:amt? CustomerRef:ref? ServiceDate:date?
  ReceivedQuantity:qty?@11 UnbilledQuantity:qty?@110 IsBilled:bool?@110 IsManuallyClosed:bool?@21
  Other1:s29?@60 Other2:s29?@60
PurchaseOrderLineGroupRet = TxnLineID:id@21 ItemGroupRef:ref Desc:s4095? Quantity:qty?
  UnitOfMeasure:s31?@70 IsPrintItemsInGroup:bool TotalAmount:amt PurchaseOrderLineRet*
ReceivePaymentRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int?
  CustomerRef:ref ARAccountRef:ref? TxnDate:date RefNumber:s20? TotalAmount:amt? PaymentMethodRef:ref?
  Memo:s4095? DepositToAccountRef:ref? UnusedPayment:amt? UnusedCredits:amt? ExternalGUID:guid?@90
  AppliedToTxnRet~
AppliedToTxnRet = TxnID:id TxnType:e.TxnType TxnDate:date? RefNumber:s20? BalanceRemaining:amt?
  Amount:amt? DiscountAmount:amt? DiscountAccountRef:ref?
TimeTrackingRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int? TxnDate:date
  EntityRef:ref CustomerRef:ref? ItemServiceRef:ref? Duration:dur ClassRef:ref? PayrollItemWageRef:ref?
  Notes:s4095? IsBillable:bool?!60 IsBilled:bool?!60 BillableStatus:e.BillableStatus?@60
  ExternalGUID:guid?@90
BillRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int? VendorRef:ref
  APAccountRef:ref?@20 TxnDate:date DueDate:date? AmountDue:amt RefNumber:s20? TermsRef:ref? Memo:s4095?
  IsPaid:bool?@20 ExternalGUID:guid?@90 LinkedTxn*@20 ExpenseLineRet* ItemLineRet~ ItemGroupLineRet~
  OpenAmount:amt?
ExpenseLineRet = TxnLineID:id AccountRef:ref? Amount:amt? Memo:s4095? CustomerRef:ref? ClassRef:ref?
  BillableStatus:e.BillableStatus?@20
ItemLineRet = TxnLineID:id ItemRef:ref? Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70 Cost:price?
  Amount:amt? CustomerRef:ref? ClassRef:ref? BillableStatus:e.BillableStatus?@20
ItemGroupLineRet = TxnLineID:id@21 ItemGroupRef:ref Desc:s4095? Quantity:qty? UnitOfMeasure:s31?@70
  TotalAmount:amt ItemLineRet*
CheckRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int? AccountRef:ref
  PayeeEntityRef:ref? RefNumber:s11? TxnDate:date Amount:amt Memo:s4095? Address:addr?
  IsToBePrinted:bool? ExternalGUID:guid?@90 ExpenseLineRet* ItemLineRet~ ItemGroupLineRet~
CreditCardChargeRet = TxnID:id TimeCreated:dt TimeModified:dt EditSequence:s16 TxnNumber:int?
  AccountRef:ref PayeeEntityRef:ref? TxnDate:date Amount:amt RefNumber:s11? Memo:s4095?
  ExternalGUID:guid?@90 ExpenseLineRet* ItemLineRet~ ItemGroupLineRet~

CustomerRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s41 FullName:s209
  IsActive:bool? ParentRef:ref? Sublevel:int CompanyName:s41? Salutation:s15? FirstName:s25?
  MiddleName:s5? LastName:s25? BillAddress:addr? ShipAddress:addr? Phone:s21? AltPhone:s21? Fax:s21?
  Email:s1023? Contact:s41? AltContact:s41? CustomerTypeRef:ref? TermsRef:ref? SalesRepRef:ref?
  Balance:amt? TotalBalance:amt? SalesTaxCodeRef:ref? ItemSalesTaxRef:ref? ResaleNumber:s15?
  AccountNumber:s99? CreditLimit:amt? PreferredPaymentMethodRef:ref?@30 JobStatus:e.JobStatus?
  JobStartDate:date? JobProjectedEndDate:date? JobEndDate:date? JobDesc:s99? JobTypeRef:ref?
  Notes:s4095? ExternalGUID:guid?@90
VendorRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s41 IsActive:bool?
  CompanyName:s41? Salutation:s15? FirstName:s25? MiddleName:s5? LastName:s25? VendorAddress:addr?
  Phone:s21? AltPhone:s21? Fax:s21? Email:s1023? Contact:s41? AltContact:s41? NameOnCheck:s41?
  Notes:s4095?!30 AccountNumber:s99? Notes:s4095?@30 VendorTypeRef:ref? TermsRef:ref? CreditLimit:amt?
  VendorTaxIdent:s15? IsVendorEligibleFor1099:bool? Balance:amt? ExternalGUID:guid?@90
EmployeeRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s41 IsActive:bool?
  Salutation:s15? FirstName:s25? MiddleName:s5? LastName:s25? EmployeeAddress:addr? PrintAs:s41?
  Phone:s21? Mobile:s21? Pager:s21? PagerPIN:s10? AltPhone:s21? Fax:s21? SSN:s11? Email:s1023?
  EmployeeType:e.EmployeeType? Gender:e.Gender? HiredDate:date? ReleasedDate:date? BirthDate:date?
  AccountNumber:s99? Notes:s4095? ExternalGUID:guid?@90
OtherNameRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s41 IsActive:bool?
  CompanyName:s41? Salutation:s15? FirstName:s25? MiddleName:s5? LastName:s25? OtherNameAddress:addr?
  Phone:s21? AltPhone:s21? Fax:s21? Email:s1023? Contact:s41? AltContact:s41? AccountNumber:s99?
  Notes:s4095?@30 ExternalGUID:guid?@90
AccountRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 FullName:s159
  IsActive:bool? ParentRef:ref? Sublevel:int AccountType:e.AccountType AccountNumber:s7?
  BankNumber:s25?@20 Desc:s200? Balance:amt? TotalBalance:amt?
ItemServiceRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 FullName:s159
  IsActive:bool? ParentRef:ref? Sublevel:int UnitOfMeasureSetRef:ref?@70 SalesTaxCodeRef:ref?
  SalesOrPurchase#a1 SalesAndPurchase#a2 ExternalGUID:guid?@90
ItemNonInventoryRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 FullName:s159
  IsActive:bool? ParentRef:ref? Sublevel:int UnitOfMeasureSetRef:ref?@70 SalesTaxCodeRef:ref?
  SalesOrPurchase#a1 SalesAndPurchase#a2 ExternalGUID:guid?@90
ItemOtherChargeRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 FullName:s159
  IsActive:bool? ParentRef:ref? Sublevel:int SalesTaxCodeRef:ref? SalesOrPurchase#a1
  SalesAndPurchase#a2 ExternalGUID:guid?@90
ItemInventoryRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 FullName:s159
  IsActive:bool? ParentRef:ref? Sublevel:int ManufacturerPartNumber:s31?@70 UnitOfMeasureSetRef:ref?@70
  SalesTaxCodeRef:ref? SalesDesc:s4095? SalesPrice:price? IncomeAccountRef:ref PurchaseDesc:s4095?
  PurchaseCost:price? COGSAccountRef:ref PrefVendorRef:ref? AssetAccountRef:ref ReorderPoint:qty?
  QuantityOnHand:qty? AverageCost:price? QuantityOnOrder:qty? QuantityOnSalesOrder:qty?@20
  ExternalGUID:guid?@90
ItemSubtotalRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 IsActive:bool?
  ItemDesc:s4095?
ItemDiscountRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 FullName:s159
  IsActive:bool? ParentRef:ref? Sublevel:int ItemDesc:s4095? SalesTaxCodeRef:ref? DiscountRate:price?#a1
  DiscountRatePercent:pct?#a2 AccountRef:ref?
ItemSalesTaxRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 IsActive:bool?
  ItemDesc:s4095? TaxRate:pct? TaxVendorRef:ref?
ItemPaymentRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 IsActive:bool?
  ItemDesc:s4095? DepositToAccountRef:ref? PaymentMethodRef:ref?
ItemGroupRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 IsActive:bool?
  ItemDesc:s4095? IsPrintItemsInGroup:bool? ItemGroupLine*
StandardTermsRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 IsActive:bool?
  StdDueDays:int? StdDiscountDays:int? DiscountPct:pct?
DateDrivenTermsRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 IsActive:bool?
  DayOfMonthDue:int DueNextMonthDays:int? DiscountDayOfMonth:int? DiscountPct:pct?
PayrollItemWageRet = ListID:id TimeCreated:dt TimeModified:dt EditSequence:s16 Name:s31 IsActive:bool?
  WageType:e.WageType ExpenseAccountRef:ref?@20
CompanyRet = IsSampleCompany:bool@30 CompanyName:s59? LegalCompanyName:s59? Address:addr?
  LegalAddress:addr? CompanyAddressForCustomer:addr? Phone:s51? Fax:s51? Email:s1023?
  CompanyWebSite:s128? FirstMonthFiscalYear:e.Month? FirstMonthIncomeTaxYear:e.Month?
  CompanyType:s255? EIN:s20?@20 SSN:s11?@21 TaxForm:e.TaxForm?@21
PreferencesRet = AccountingPreferences FinanceChargePreferences JobsAndEstimatesPreferences
  PurchasesAndVendorsPreferences ReportsPreferences SalesAndCustomersPreferences SalesTaxPreferences?
  TimeTrackingPreferences? CurrentAppAccessRights
AccountingPreferences = IsUsingAccountNumbers:bool IsRequiringAccounts:bool IsUsingClassTracking:bool
  IsUsingAuditTrail:bool IsAssigningJournalEntryNumbers:bool ClosingDate:date?
FinanceChargePreferences = AnnualInterestRate:pct? MinFinanceCharge:amt? GracePeriod:int
  FinanceChargeAccountRef:ref? IsAssessingForOverdueCharges:bool CalculateChargesFrom:e.CalculateChargesFrom
  IsMarkedToBePrinted:bool
JobsAndEstimatesPreferences = IsUsingEstimates:bool IsUsingProgressInvoicing:bool
  IsPrintingItemsWithZeroAmounts:bool
PurchasesAndVendorsPreferences = IsUsingInventory:bool DaysBillsAreDue:int IsAutomaticallyUsingDiscounts:bool
  DefaultDiscountAccountRef:ref?
ReportsPreferences = AgingReportBasis:e.AgingReportBasis SummaryReportBasis:e.SummaryReportBasis
SalesAndCustomersPreferences = DefaultShipMethodRef:ref? DefaultFOB:s13? DefaultMarkup:pct?
  IsTrackingReimbursedExpensesAsIncome:bool IsAutoApplyingPayments:bool
SalesTaxPreferences = DefaultItemSalesTaxRef:ref PaySalesTax:e.PaySalesTax DefaultTaxableSalesTaxCodeRef:ref
  DefaultNonTaxableSalesTaxCodeRef:ref
TimeTrackingPreferences = FirstDayOfWeek:e.Weekday
CurrentAppAccessRights = IsAutomaticLoginAllowed:bool AutomaticLoginUserName:s29?
  IsPersonalDataAccessAllowed:bool
HostRet = ProductName:s MajorVersion:s MinorVersion:s Country:e.Country?@30 SupportedQBXMLVersion:s+
  IsAutomaticLogin:bool?@30 QBFileMode:e.QBFileMode?@30
)";

const char* const kEnums = R"(
ActiveStatus = ActiveOnly InactiveOnly All
MatchCriterion = StartsWith Contains EndsWith
Operator = LessThan LessThanEqual Equal GreaterThan GreaterThanEqual
PaidStatus = All PaidOnly NotPaidOnly
AccountType = AccountsPayable AccountsReceivable Bank CostOfGoodsSold CreditCard Equity Expense FixedAsset
  Income LongTermLiability NonPosting OtherAsset OtherCurrentAsset OtherCurrentLiability OtherExpense OtherIncome
BillableStatus = Billable NotBillable HasBeenBilled
JobStatus = Awarded Closed InProgress None NotAwarded Pending
EmployeeType = Officer Owner Regular Statutory
Gender = Male Female
TxnDelType = ARRefundCreditCard Bill BillPaymentCheck BillPaymentCreditCard BuildAssembly Charge Check
  CreditCardCharge CreditCardCredit CreditMemo Deposit Estimate InventoryAdjustment Invoice ItemReceipt
  JournalEntry PayrollLiabilityAdjustment PayrollPriorPayment PayrollYearToDateAdjustment PurchaseOrder
  ReceivePayment SalesOrder SalesReceipt SalesTaxPaymentCheck TimeTracking TransferInventory
  VehicleMileage VendorCredit
TxnType = ARRefundCreditCard Bill BillPaymentCheck BillPaymentCreditCard BuildAssembly Charge Check
  CreditCardCharge CreditCardCredit CreditMemo Deposit Estimate InventoryAdjustment Invoice ItemReceipt
  JournalEntry LiabilityAdjustment Paycheck PayrollLiabilityCheck PurchaseOrder ReceivePayment SalesOrder
  SalesReceipt SalesTaxPaymentCheck Transfer VendorCredit YTDAdjustment
LinkType = AMTTYPE QUANTYPE
Month = January February March April May June July August September October November December
WageType = Bonus Commission HourlyOvertime HourlyRegular HourlySick HourlyVacation SalaryRegular
  SalarySick SalaryVacation
Weekday = Monday Tuesday Wednesday Thursday Friday Saturday Sunday
CalculateChargesFrom = DueDate InvoiceOrBilledDate
AgingReportBasis = AgeFromDueDate AgeFromTransactionDate
SummaryReportBasis = Accrual Cash
PaySalesTax = Monthly Quarterly Annually
TaxForm = Form1120 Form1120S Form1065 Form990 Form990PF Form990T Form1040 OtherOrNone
Country = US CA UK AU
QBFileMode = SingleUser MultiUser
)";

const char* const kDateMacros20[] = {
    "ThisWeekToDate", "ThisMonthToDate", "ThisFiscalQuarterToDate", "ThisFiscalYearToDate",
    "LastWeek",       "LastMonth",       "LastFiscalQuarter",       "LastFiscalYear"};
const char* const kDateMacros30[] = {"All",
                                     "Today",
                                     "ThisWeek",
                                     "ThisWeekToDate",
                                     "ThisMonth",
                                     "ThisMonthToDate",
                                     "ThisCalendarQuarter",
                                     "ThisCalendarQuarterToDate",
                                     "ThisFiscalQuarter",
                                     "ThisFiscalQuarterToDate",
                                     "ThisCalendarYear",
                                     "ThisCalendarYearToDate",
                                     "ThisFiscalYear",
                                     "ThisFiscalYearToDate",
                                     "Yesterday",
                                     "LastWeek",
                                     "LastWeekToDate",
                                     "LastMonth",
                                     "LastMonthToDate",
                                     "LastCalendarQuarter",
                                     "LastCalendarQuarterToDate",
                                     "LastFiscalQuarter",
                                     "LastFiscalQuarterToDate",
                                     "LastCalendarYear",
                                     "LastCalendarYearToDate",
                                     "LastFiscalYear",
                                     "LastFiscalYearToDate",
                                     "NextWeek",
                                     "NextFourWeeks",
                                     "NextMonth",
                                     "NextCalendarQuarter",
                                     "NextCalendarYear",
                                     "NextFiscalQuarter",
                                     "NextFiscalYear"};

// Requests whose shape repeats across kinds, written out by code.
std::string generatedTables() {
    std::ostringstream out;
    const char* txnKinds[] = {"Invoice",    "Estimate",      "SalesReceipt",
                              "CreditMemo", "PurchaseOrder", "ReceivePayment",
                              "Bill",       "Check",         "CreditCardCharge"};
    for (const char* kind : txnKinds) {
        std::string k = kind;
        bool paid = k == "Invoice" || k == "Bill";
        out << k
            << "QueryRq = TxnID:id+#a1 RefNumber:s+#a2 RefNumberCaseSensitive:s+@40#a3"
               " MaxReturned:int?#a4 ModifiedDateRangeFilter?#a4 TxnDateRangeFilter?#a4"
               " EntityFilter?#a4 AccountFilter?#a4 RefNumberFilter?#a4 RefNumberRangeFilter?#a4"
               " CurrencyFilter?@80#a4"
            << (paid ? " PaidStatus:e.PaidStatus?#a4" : "")
            << " IncludeLineItems:bool? IncludeLinkedTxns:bool?@11 IncludeRetElement:s*@40"
               " OwnerID:guid*@20\n";
    }
    struct ListKind {
        const char* name;
        bool balance;
        bool accountType;
        bool ownerId;
    };
    const ListKind lists[] = {
        {"Customer", true, false, true},          {"Vendor", true, false, true},
        {"Employee", false, false, true},         {"OtherName", false, false, true},
        {"Account", false, true, true},           {"Item", false, false, true},
        {"ItemService", false, false, true},      {"ItemNonInventory", false, false, true},
        {"ItemOtherCharge", false, false, true},  {"ItemInventory", false, false, true},
        {"ItemGroup", false, false, true},        {"ItemSubtotal", false, false, true},
        {"ItemDiscount", false, false, true},     {"ItemSalesTax", false, false, true},
        {"ItemPayment", false, false, true},      {"Terms", false, false, false},
        {"StandardTerms", false, false, false},   {"DateDrivenTerms", false, false, false},
        {"PayrollItemWage", false, false, false},
    };
    for (const auto& l : lists) {
        out << l.name
            << "QueryRq = ListID:id+#a1 FullName:s+#a2 MaxReturned:int?#a3"
               " ActiveStatus:e.ActiveStatus?#a3 FromModifiedDate:dt?#a3 ToModifiedDate:dt?#a3"
               " NameFilter?#a3 NameRangeFilter?#a3"
            << (l.balance ? " TotalBalanceFilter?#a3" : "")
            << (l.accountType ? " AccountType:e.AccountType?#a3" : "")
            << " CurrencyFilter?@80#a3 IncludeRetElement:s*@40"
            << (l.ownerId ? " OwnerID:guid*@20" : "") << "\n";
    }
    const char* adds[] = {"Account",          "ItemService",  "ItemNonInventory", "ItemOtherCharge",
                          "ItemGroup",        "Vendor",       "Customer",         "Employee",
                          "Invoice",          "Bill",         "PurchaseOrder",    "Check",
                          "CreditCardCharge", "SalesReceipt", "ReceivePayment",   "TimeTracking",
                          "Estimate",         "CreditMemo"};
    for (const char* kind : adds) {
        out << kind << "AddRq = " << kind << "Add IncludeRetElement:s*@40\n";
    }
    return out.str();
}

struct Tables {
    std::unordered_map<std::string, AggregateRule> aggregates;
    std::unordered_map<std::string, std::set<std::string, std::less<>>> enums;
};

// Joins continuation lines (starting with blanks) to their definition.
std::vector<std::string> definitions(const std::string& text) {
    std::vector<std::string> defs;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty()) {
            continue;
        }
        if ((line[0] == ' ' || line[0] == '\t') && !defs.empty()) {
            defs.back() += ' ';
            defs.back() += line;
        } else {
            defs.push_back(line);
        }
    }
    return defs;
}

ElementRule parseEntry(std::string token) {
    ElementRule rule;
    auto takeSuffix = [&](char marker) -> std::string {
        auto at = token.find(marker);
        if (at == std::string::npos) {
            return {};
        }
        std::size_t end = at + 1;
        while (end < token.size() && std::isalnum(static_cast<unsigned char>(token[end]))) {
            ++end;
        }
        std::string value = token.substr(at + 1, end - at - 1);
        token.erase(at, end - at);
        return value;
    };
    bool interleave = false;
    if (auto at = token.find('~'); at != std::string::npos) {
        interleave = true;
        token.erase(at, 1);
    }
    if (std::string g = takeSuffix('#'); !g.empty()) {
        rule.group = static_cast<char>(std::tolower(static_cast<unsigned char>(g[0])));
        rule.groupRequired = std::isupper(static_cast<unsigned char>(g[0])) != 0;
        rule.branch = std::stoi(g.substr(1));
    }
    if (std::string s = takeSuffix('@'); !s.empty()) {
        rule.since = std::stoi(s);
    }
    if (std::string u = takeSuffix('!'); !u.empty()) {
        rule.until = std::stoi(u);
    }
    if (!token.empty() && (token.back() == '?' || token.back() == '*' || token.back() == '+')) {
        char c = token.back();
        token.pop_back();
        rule.required = c == '+';
        rule.repeats = c != '?';
    }
    if (interleave) {
        rule.required = false;
        rule.repeats = true;
        rule.group = '~';
    }
    std::string type;
    if (auto colon = token.find(':'); colon != std::string::npos) {
        type = token.substr(colon + 1);
        token.resize(colon);
    }
    rule.name = token;
    if (type.empty()) {
        rule.type = ValueType::Aggregate;
    } else if (type == "id") {
        rule.type = ValueType::Id;
    } else if (type[0] == 's' &&
               (type.size() == 1 || std::isdigit(static_cast<unsigned char>(type[1])))) {
        rule.type = ValueType::Str;
        rule.maxLength = type.size() > 1 ? std::stoi(type.substr(1)) : 0;
    } else if (type == "date") {
        rule.type = ValueType::Date;
    } else if (type == "dt") {
        rule.type = ValueType::DateTime;
    } else if (type == "amt") {
        rule.type = ValueType::Amount;
    } else if (type == "price") {
        rule.type = ValueType::Price;
    } else if (type == "qty") {
        rule.type = ValueType::Quantity;
    } else if (type == "pct") {
        rule.type = ValueType::Percent;
    } else if (type == "bool") {
        rule.type = ValueType::Bool;
    } else if (type == "int") {
        rule.type = ValueType::Int;
    } else if (type == "dur") {
        rule.type = ValueType::Duration;
    } else if (type == "guid") {
        rule.type = ValueType::Guid;
    } else if (type == "ref") {
        rule.type = ValueType::Ref;
    } else if (type == "addr") {
        rule.type = ValueType::Address;
    } else if (type.rfind("e.", 0) == 0) {
        rule.type = ValueType::Enum;
        rule.enumName = type.substr(2);
    }
    return rule;
}

const Tables& tables() {
    static const Tables t = [] {
        Tables t;
        for (const std::string& def : definitions(std::string(kTables) + generatedTables())) {
            std::istringstream in(def);
            std::string name, eq, token;
            in >> name >> eq;
            AggregateRule rule{name, {}};
            while (in >> token) {
                rule.children.push_back(parseEntry(token));
            }
            t.aggregates[name] = std::move(rule);
        }
        for (const std::string& def : definitions(kEnums)) {
            std::istringstream in(def);
            std::string name, eq, token;
            in >> name >> eq;
            auto& values = t.enums[name];
            while (in >> token) {
                values.insert(token);
            }
        }
        return t;
    }();
    return t;
}

struct Validator {
    Version version;
    Validation result;

    void fault(std::string detail) {
        if (!result.fault) {
            result.fault = std::move(detail);
        }
    }
    void status(int code, std::string message) {
        if (result.statusCode == 0) {
            result.statusCode = code;
            result.statusMessage = std::move(message);
        }
    }
    void missing(const std::string& name) {
        status(3150, "There is a missing element: \"" + name + "\".");
    }

    void checkValue(const ElementRule& rule, const xml::Node& node, const std::string& path) {
        if (node.firstChildElement()) {
            fault("element \"" + node.firstChildElement().name() + "\" is not allowed inside \"" +
                  rule.name + "\" (" + path + ")");
            return;
        }
        std::string value = node.text();
        const std::string& f = rule.name;
        auto convert = [&](int code, const char* what) {
            status(code, std::string("There was an error when converting the ") + what + " \"" +
                             value + "\" in the field \"" + f + "\".");
        };
        switch (rule.type) {
            case ValueType::Id: {
                auto dash = value.find('-');
                bool ok =
                    !value.empty() && value.size() <= 36 && dash != std::string::npos && dash > 0 &&
                    dash + 1 < value.size() &&
                    std::all_of(
                        value.begin(), value.begin() + static_cast<long>(dash),
                        [](char c) { return std::isxdigit(static_cast<unsigned char>(c)); }) &&
                    std::all_of(value.begin() + static_cast<long>(dash) + 1, value.end(),
                                [](char c) { return std::isdigit(static_cast<unsigned char>(c)); });
                if (!ok) {
                    status(3000, "The given object ID \"" + value + "\" in the field \"" + f +
                                     "\" is invalid.");
                }
                break;
            }
            case ValueType::Str:
                // QuickBooks counts letters, not the bytes of their UTF-8 form.
                if (rule.maxLength > 0 && std::count_if(value.begin(), value.end(), [](char c) {
                                              return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
                                          }) > rule.maxLength) {
                    status(3070,
                           "The string \"" + value + "\" in the field \"" + f + "\" is too long.");
                }
                break;
            case ValueType::Date:
                if (!value.empty() && !Date::parse(value)) {
                    convert(3020, "date value");
                }
                break;
            case ValueType::DateTime:
                if (!value.empty() && !parseDateTime(value)) {
                    convert(3020, "date value");
                }
                break;
            case ValueType::Amount:
                if (!Decimal::parse(value, 2)) {
                    convert(3040, "amount");
                }
                break;
            case ValueType::Price:
                if (!Decimal::parse(value, 5)) {
                    convert(3045, "price");
                }
                break;
            case ValueType::Percent:
                if (!Decimal::parse(value, 5)) {
                    convert(3050, "percent");
                }
                break;
            case ValueType::Quantity:
                if (!Decimal::parse(value, 5)) {
                    convert(3060, "quantity");
                }
                break;
            case ValueType::Int:
                if (value.empty() || value.size() > 9 ||
                    !std::all_of(value.begin(), value.end(), [](char c) {
                        return std::isdigit(static_cast<unsigned char>(c));
                    })) {
                    convert(3040, "number");
                }
                break;
            case ValueType::Bool:
                if (!value.empty() && !parseBool(value)) {
                    convert(3010, "boolean value");
                }
                break;
            case ValueType::Duration:
                if (!value.empty() && !parseDuration(value)) {
                    status(3035, "There was an error when converting the time interval \"" + value +
                                     "\" in the field \"" + f + "\".");
                }
                break;
            case ValueType::Enum:
                // An empty DateMacro is read as "no date filter", as Dorvane's templates send it.
                if (!(value.empty() && rule.enumName == "DateMacro") &&
                    !enumAllows(rule.enumName, value, version)) {
                    fault("\"" + value + "\" is not a valid value of \"" + f + "\" (" + path + ")");
                }
                break;
            default:
                break;
        }
    }

    void checkRef(const xml::Node& node, const std::string& path) {
        static const AggregateRule rule{"Ref",
                                        {parseEntry("ListID:id?"), parseEntry("FullName:s209?")}};
        checkChildren(node, rule, path);
    }

    void checkAddress(const xml::Node& node, const std::string& path) {
        static const AggregateRule rule = [] {
            AggregateRule r{"Address", {}};
            for (const auto& part : addressParts()) {
                ElementRule e;
                e.name = part.name;
                e.type = ValueType::Str;
                e.maxLength = part.maxLength;
                e.required = false;
                e.since = part.since;
                r.children.push_back(e);
            }
            return r;
        }();
        checkChildren(node, rule, path);
    }

    void checkChildren(const xml::Node& node, const AggregateRule& rule, const std::string& path) {
        const auto& entries = rule.children;
        std::vector<int> counts(entries.size(), 0);
        std::map<char, int> branchUsed;
        std::size_t pos = 0;
        for (xml::Node child = node.firstChildElement(); child;
             child = child.nextSiblingElement()) {
            if (result.fault) {
                return;
            }
            std::string name = child.name();
            std::string childPath = path + "/" + name;
            std::size_t start = pos;
            while (start > 0 && entries[start].group == '~' && entries[start - 1].group == '~') {
                --start;
            }
            std::size_t j = start;
            while (j < entries.size() &&
                   !(entries[j].name == name && entries[j].availableIn(version))) {
                ++j;
            }
            if (j == entries.size()) {
                bool known = std::any_of(entries.begin(), entries.end(), [&](const ElementRule& e) {
                    return e.name == name && e.availableIn(version);
                });
                fault(known ? "element \"" + name + "\" is out of order in \"" + rule.name +
                                  "\" (" + childPath + ")"
                            : "element \"" + name + "\" is not allowed in \"" + rule.name + "\" (" +
                                  childPath + ")");
                return;
            }
            const ElementRule& e = entries[j];
            if (counts[j] > 0 && !e.repeats) {
                fault("element \"" + name + "\" appears more than once in \"" + rule.name + "\" (" +
                      childPath + ")");
                return;
            }
            for (std::size_t k = pos; k < j; ++k) {
                if (entries[k].required && counts[k] == 0 && entries[k].group == 0 &&
                    entries[k].availableIn(version)) {
                    missing(entries[k].name);
                }
            }
            if (e.group && e.group != '~') {
                auto [it, inserted] = branchUsed.emplace(e.group, e.branch);
                if (!inserted && it->second != e.branch) {
                    fault("element \"" + name +
                          "\" cannot be combined with the elements before it in \"" + rule.name +
                          "\" (" + childPath + ")");
                    return;
                }
            }
            ++counts[j];
            pos = j;
            checkElement(e, child, childPath);
        }
        for (std::size_t k = pos; k < entries.size(); ++k) {
            if (entries[k].required && counts[k] == 0 && entries[k].group == 0 &&
                entries[k].availableIn(version)) {
                missing(entries[k].name);
            }
        }
        for (const auto& e : entries) {
            if (e.groupRequired && e.availableIn(version) && !branchUsed.count(e.group)) {
                missing(e.name);
                break;
            }
        }
    }

    void checkElement(const ElementRule& rule, const xml::Node& node, const std::string& path) {
        switch (rule.type) {
            case ValueType::Aggregate: {
                const AggregateRule* agg = findAggregate(rule.name);
                if (!agg) {
                    fault("element \"" + rule.name + "\" is not supported (" + path + ")");
                    return;
                }
                checkChildren(node, *agg, path);
                break;
            }
            case ValueType::Ref:
                checkRef(node, path);
                break;
            case ValueType::Address:
                checkAddress(node, path);
                break;
            default:
                checkValue(rule, node, path);
        }
    }
};

}  // namespace

std::optional<Version> parseVersion(std::string_view text) {
    static const std::map<std::string, Version, std::less<>> known = {
        {"1.0", 10},   {"1.1", 11},   {"2.0", 20},   {"2.1", 21},  {"3.0", 30}, {"4.0", 40},
        {"4.1", 41},   {"5.0", 50},   {"6.0", 60},   {"7.0", 70},  {"8.0", 80}, {"9.0", 90},
        {"10.0", 100}, {"11.0", 110}, {"12.0", 120}, {"13.0", 130}};
    auto it = known.find(text);
    if (it == known.end()) {
        return std::nullopt;
    }
    return it->second;
}

std::string versionText(Version v) {
    return std::to_string(v / 10) + "." + std::to_string(v % 10);
}

const AggregateRule* findAggregate(std::string_view name) {
    const auto& all = tables().aggregates;
    auto it = all.find(std::string(name));
    return it == all.end() ? nullptr : &it->second;
}

bool enumAllows(std::string_view enumName, std::string_view value, Version version) {
    if (enumName == "DateMacro") {
        if (version >= 30) {
            return std::find(std::begin(kDateMacros30), std::end(kDateMacros30), value) !=
                   std::end(kDateMacros30);
        }
        return std::find(std::begin(kDateMacros20), std::end(kDateMacros20), value) !=
               std::end(kDateMacros20);
    }
    const auto& all = tables().enums;
    auto it = all.find(std::string(enumName));
    return it != all.end() && it->second.count(value) > 0;
}

const std::vector<AddressPart>& addressParts() {
    static const std::vector<AddressPart> parts = {
        {"Addr1", 10, 41},   {"Addr2", 10, 41}, {"Addr3", 10, 41}, {"Addr4", 20, 41},
        {"Addr5", 60, 41},   {"City", 10, 31},  {"State", 10, 21}, {"PostalCode", 10, 13},
        {"Country", 10, 31}, {"Note", 60, 41}};
    return parts;
}

Validation validateRequest(const xml::Node& request, Version version) {
    Validator v{version, {}};
    std::string name = request.name();
    const AggregateRule* rule = findAggregate(name);
    if (!rule || name.size() < 3 || name.compare(name.size() - 2, 2, "Rq") != 0) {
        v.fault("element \"" + name + "\" is not allowed in \"QBXMLMsgsRq\" (QBXML/QBXMLMsgsRq/" +
                name + ")");
        return v.result;
    }
    for (const auto& [attr, value] : request.attributes()) {
        if (attr == "requestID") {
            if (value.size() > 50) {
                v.status(1060, "The requestID \"" + value + "\" is invalid.");
            }
        } else if ((attr == "metaData" && version >= 40) ||
                   ((attr == "iterator" || attr == "iteratorID") && version >= 50)) {
            continue;
        } else {
            v.fault("attribute \"" + attr + "\" is not allowed on \"" + name + "\"");
        }
    }
    v.checkChildren(request, *rule, "QBXML/QBXMLMsgsRq/" + name);
    return v.result;
}

Validation validateElement(const xml::Node& element, Version version) {
    Validator v{version, {}};
    std::string name = element.name();
    if (const AggregateRule* rule = findAggregate(name)) {
        v.checkChildren(element, *rule, name);
    } else {
        v.fault("element \"" + name + "\" has no rule");
    }
    return v.result;
}

}  // namespace dorvane::qbsandbox
