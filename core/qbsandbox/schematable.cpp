// SPDX-License-Identifier: GPL-3.0-or-later
// The sandbox's order tables and enumerations, as the text schema.cpp parses.
#include "qbsandbox/schematable.h"

#include <iterator>
#include <sstream>

namespace dorvane::qbsandbox {

namespace {

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

}  // namespace

std::string schemaTableText() {
    return std::string(kTables) + generatedTables();
}

const char* schemaEnumText() {
    return kEnums;
}

std::span<const char* const> dateMacros(Version version) {
    if (version >= 30) {
        return {std::begin(kDateMacros30), std::end(kDateMacros30)};
    }
    return {std::begin(kDateMacros20), std::end(kDateMacros20)};
}

}  // namespace dorvane::qbsandbox
