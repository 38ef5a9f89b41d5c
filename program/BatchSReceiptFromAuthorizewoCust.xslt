<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: one transaction of an Authorize.Net download, booked as a sales receipt without a
  customer.

  Receives one AuthNetRecord element of the converted download: one child per column, named
  after the column's header without blanks, "-", "/", "\" and "." ("Transaction ID" becomes
  TransactionID, "Ship-To City" ShipToCity, "L2 - Tax" L2Tax). Writes the qbXML 1.1 message
  that adds the sales receipt, without declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><SalesReceiptAddRq requestID="1"><SalesReceiptAdd>
      CustomerRef          none here; BatchSReceiptFromAuthorize.xslt imports this sheet and
                           names the customer by Company (template "customer-ref")
      TxnDate              from Submit Date/Time ("17-Nov-2026 09:15:32 PST",
                           "11/17/2026 09:15:32 AM", "2026-11-17T09:15:32"), else Settlement
                           Date/Time; left out when neither is a date, so QuickBooks takes today
      RefNumber            Invoice Number, first 11 letters
      BillAddress          Company, the customer's name, Address, City, State, ZIP, Country
      ShipAddress          the same from the Ship-To columns
      Memo                 "Authorize.Net transaction <Transaction ID>" first (the import finds
                           a receipt again by it), then ", auth <Authorization Code>", the
                           transaction type, an invoice number longer than the reference
                           number, the P.O. number, and the tax, freight and duty contained in
                           the amount
      SalesReceiptLineAdd  one line: ItemRef/FullName "Uncategorized Item" (the import points it
                           at the item of the import settings), Desc (Invoice Description),
                           Amount (Total Amount: "1,234.50", "$1,234.50" and "1234.5" all
                           become 1234.50)
    </SalesReceiptAdd></SalesReceiptAddRq></QBXMLMsgsRq></QBXML>

  The amount, date and field templates come from SReceiptFromAuthorizewoCust.xslt, which reads
  a single receipt the same way. Every character that is not ASCII goes out as a character
  reference, as QuickBooks wants.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="SReceiptFromAuthorizewoCust.xslt"/>

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*/*[1]"/>
  </xsl:template>

  <xsl:template match="*">
    <xsl:variable name="invoice" select="normalize-space(InvoiceNumber)"/>
    <xsl:variable name="amount">
      <xsl:call-template name="plain-amount"><xsl:with-param name="text" select="TotalAmount"/></xsl:call-template>
    </xsl:variable>
    <xsl:variable name="submitted">
      <xsl:call-template name="txn-date"><xsl:with-param name="text"><xsl:call-template name="date-text"><xsl:with-param name="text" select="normalize-space(SubmitDateTime)"/></xsl:call-template></xsl:with-param></xsl:call-template>
    </xsl:variable>
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <SalesReceiptAddRq requestID="1">
          <SalesReceiptAdd>
            <xsl:call-template name="customer-ref"/>
            <xsl:choose>
              <xsl:when test="string($submitted) != ''">
                <xsl:call-template name="txn-date"><xsl:with-param name="text"><xsl:call-template name="date-text"><xsl:with-param name="text" select="normalize-space(SubmitDateTime)"/></xsl:call-template></xsl:with-param></xsl:call-template>
              </xsl:when>
              <xsl:otherwise>
                <xsl:call-template name="txn-date"><xsl:with-param name="text"><xsl:call-template name="date-text"><xsl:with-param name="text" select="normalize-space(SettlementDateTime)"/></xsl:call-template></xsl:with-param></xsl:call-template>
              </xsl:otherwise>
            </xsl:choose>
            <xsl:if test="$invoice != ''">
              <RefNumber><xsl:value-of select="substring($invoice, 1, 11)"/></RefNumber>
            </xsl:if>
            <xsl:call-template name="record-address">
              <xsl:with-param name="element">BillAddress</xsl:with-param>
              <xsl:with-param name="company" select="normalize-space(Company)"/>
              <xsl:with-param name="person" select="normalize-space(concat(CustomerFirstName, ' ', CustomerLastName))"/>
              <xsl:with-param name="street" select="normalize-space(Address)"/>
              <xsl:with-param name="city" select="City"/>
              <xsl:with-param name="state" select="State"/>
              <xsl:with-param name="zip" select="ZIP"/>
              <xsl:with-param name="country" select="Country"/>
            </xsl:call-template>
            <xsl:call-template name="record-address">
              <xsl:with-param name="element">ShipAddress</xsl:with-param>
              <xsl:with-param name="company" select="normalize-space(ShipToCompany)"/>
              <xsl:with-param name="person" select="normalize-space(concat(ShipToFirstName, ' ', ShipToLastName))"/>
              <xsl:with-param name="street" select="normalize-space(ShipToAddress)"/>
              <xsl:with-param name="city" select="ShipToCity"/>
              <xsl:with-param name="state" select="ShipToState"/>
              <xsl:with-param name="zip" select="ShipToZIP"/>
              <xsl:with-param name="country" select="ShipToCountry"/>
            </xsl:call-template>
            <xsl:call-template name="record-memo"><xsl:with-param name="invoice" select="$invoice"/></xsl:call-template>
            <SalesReceiptLineAdd>
              <ItemRef><FullName>Uncategorized Item</FullName></ItemRef>
              <xsl:if test="normalize-space(InvoiceDescription) != ''">
                <Desc><xsl:value-of select="substring(normalize-space(InvoiceDescription), 1, 4095)"/></Desc>
              </xsl:if>
              <xsl:if test="$amount != ''">
                <Amount><xsl:value-of select="$amount"/></Amount>
              </xsl:if>
            </SalesReceiptLineAdd>
          </SalesReceiptAdd>
        </SalesReceiptAddRq>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

  <!-- The date part of a date and time: "2026-11-17T09:15:32" gives "2026-11-17"; the other
       forms go to txn-date as they are. -->
  <xsl:template name="date-text">
    <xsl:param name="text"/>
    <xsl:choose>
      <xsl:when test="substring($text, 5, 1) = '-' and substring($text, 11, 1) = 'T'">
        <xsl:value-of select="substring($text, 1, 10)"/>
      </xsl:when>
      <xsl:otherwise><xsl:value-of select="$text"/></xsl:otherwise>
    </xsl:choose>
  </xsl:template>

  <!-- The customer: none on this sheet. -->
  <xsl:template name="customer-ref"/>

  <!-- The memo: the transaction first, then what has no field of its own. -->
  <xsl:template name="record-memo">
    <xsl:param name="invoice"/>
    <xsl:variable name="type" select="normalize-space(TransactionType)"/>
    <xsl:variable name="text">
      <xsl:choose>
        <xsl:when test="normalize-space(TransactionID) != ''">
          <xsl:value-of select="concat('Authorize.Net transaction ', normalize-space(TransactionID))"/>
        </xsl:when>
        <xsl:otherwise>Authorize.Net receipt</xsl:otherwise>
      </xsl:choose>
      <xsl:call-template name="memo-part"><xsl:with-param name="label" select="', auth '"/><xsl:with-param name="value" select="AuthorizationCode"/></xsl:call-template>
      <xsl:if test="$type != '' and not(contains(translate($type, $upper, $lower), 'capture'))">
        <xsl:value-of select="concat(', ', $type)"/>
      </xsl:if>
      <xsl:if test="string-length($invoice) &gt; 11">
        <xsl:value-of select="concat(', invoice ', $invoice)"/>
      </xsl:if>
      <xsl:call-template name="memo-part"><xsl:with-param name="label" select="', P.O. '"/><xsl:with-param name="value" select="L2PurchaseOrderNumber"/></xsl:call-template>
      <xsl:variable name="charges">
        <xsl:call-template name="charge"><xsl:with-param name="label">tax</xsl:with-param><xsl:with-param name="value" select="L2Tax"/></xsl:call-template>
        <xsl:call-template name="charge"><xsl:with-param name="label">freight</xsl:with-param><xsl:with-param name="value" select="L2Freight"/></xsl:call-template>
        <xsl:call-template name="charge"><xsl:with-param name="label">duty</xsl:with-param><xsl:with-param name="value" select="L2Duty"/></xsl:call-template>
      </xsl:variable>
      <xsl:if test="$charges != ''">
        <xsl:value-of select="concat('; amount includes', substring($charges, 2))"/>
      </xsl:if>
    </xsl:variable>
    <Memo><xsl:value-of select="substring($text, 1, 4095)"/></Memo>
  </xsl:template>

  <!-- An address from the record's columns: company, name and street on the address lines,
       each only when there, then city, state, postal code, country; nothing when all are
       empty. -->
  <xsl:template name="record-address">
    <xsl:param name="element"/>
    <xsl:param name="company"/>
    <xsl:param name="person"/>
    <xsl:param name="street"/>
    <xsl:param name="city"/>
    <xsl:param name="state"/>
    <xsl:param name="zip"/>
    <xsl:param name="country"/>
    <xsl:if test="normalize-space(concat($company, $person, $street, $city, $state, $zip, $country)) != ''">
      <xsl:element name="{$element}">
        <xsl:call-template name="address-lines">
          <xsl:with-param name="first" select="$company"/>
          <xsl:with-param name="second" select="$person"/>
          <xsl:with-param name="third" select="$street"/>
        </xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">City</xsl:with-param><xsl:with-param name="value" select="$city"/><xsl:with-param name="length" select="31"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">State</xsl:with-param><xsl:with-param name="value" select="$state"/><xsl:with-param name="length" select="21"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">PostalCode</xsl:with-param><xsl:with-param name="value" select="$zip"/><xsl:with-param name="length" select="13"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">Country</xsl:with-param><xsl:with-param name="value" select="$country"/><xsl:with-param name="length" select="31"/></xsl:call-template>
      </xsl:element>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
