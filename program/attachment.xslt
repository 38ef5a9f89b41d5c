<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the exchange file (.dvx) that goes with a mailed document.

  Receives a copy of the document's qbXML Ret element (InvoiceRet, EstimateRet,
  SalesReceiptRet, ...) with the sender's CompanyRet appended as its last child, and writes
  the exchange file:

    <?xml version="1.0" encoding="UTF-8"?>
    <InvoiceRet>
      ... the document's elements, lines included, as QuickBooks gave them ...
      <CompanyRet>
        <CompanyName>...</CompanyName> ...
      </CompanyRet>
    </InvoiceRet>

  The root element is the Ret element itself (its name tells the receiver what kind of
  document it is), right after the declaration, with nothing else at the top level. The
  receiver finds the sender's name at //CompanyRet/CompanyName.

  List ids mean nothing in the receiver's company file, so every ListID reads "ignore".
  The sender's private company data (legal name and address, company file name, fiscal
  months, company type) stays at home.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="xml" version="1.0" encoding="UTF-8" indent="yes" omit-xml-declaration="no"/>

  <!-- A whole document: its root element only (no comments or instructions around it). -->
  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="@* | node()">
    <xsl:copy>
      <xsl:apply-templates select="@* | node()"/>
    </xsl:copy>
  </xsl:template>

  <xsl:template match="ListID">
    <ListID>ignore</ListID>
  </xsl:template>

  <xsl:template match="CompanyRet/CompanyType | CompanyRet/FileName | CompanyRet/LegalAddress
                       | CompanyRet/LegalCompanyName | CompanyRet/FirstMonthFiscalYear
                       | CompanyRet/FirstMonthIncomeTaxYear"/>

</xsl:stylesheet>
