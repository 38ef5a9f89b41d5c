<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: an Authorize.Net receipt, booked as a sales receipt without a customer.

  Receives the receipt document's root element, AuthorizeNet: one element per receipt line,
  named after the line's label without blanks and slashes, the billing and shipping fields
  inside Billing and Shipping. Writes the qbXML 1.1 message that adds the sales receipt,
  without declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><SalesReceiptAddRq requestID="1"><SalesReceiptAdd>
      CustomerRef          none here; SReceiptFromAuthorize.xslt imports this sheet and names
                           the customer by the first Company (template "customer-ref")
      TxnDate              from DateTime: "12-Mar-2003", "1-Mar-2003 " (the receipt's first
                           eleven letters), also "3/12/2003" and "2003-03-12"; left out when
                           it is no real date, so QuickBooks takes today
      RefNumber            the receipt's Invoice (or Invoice Number), first 11 letters
      BillAddress          from Billing (or the receipt's top when it has no sections),
      ShipAddress          from Shipping: company, name and street on the address lines as
                           QuickBooks addresses a customer, then City, State (State/Province),
                           PostalCode (Zip/Postal Code), Country; cut to QuickBooks' lengths
      Memo                 "Authorize.Net transaction <Transaction ID>, auth <Authorization
                           Code>, <Payment Method>", then what the receipt carries that a
                           sales receipt has no field for: an invoice number longer than the
                           reference number, the P.O. number, a transaction type other than a
                           capture, and the tax, freight and duty contained in the amount
      SalesReceiptLineAdd  one line: ItemRef/FullName "Uncategorized Item" (the item every
                           company file gets at start-up), Desc (Description), Amount
    </SalesReceiptAdd></SalesReceiptAddRq></QBXMLMsgsRq></QBXML>

  The receipt's Amount is what the card was charged, tax, freight and duty included, so the
  one line carries the whole amount: "$1,234.50", "185.40 (USD)" and "1,234.50 USD" all become
  1234.50 and 185.40. No payment method and no deposit account are named (QuickBooks puts the
  money into Undeposited Funds), since no name of them is sure to exist in every company file.

  Every character that is not ASCII goes out as a character reference, as QuickBooks wants.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:variable name="upper" select="'ABCDEFGHIJKLMNOPQRSTUVWXYZ'"/>
  <xsl:variable name="lower" select="'abcdefghijklmnopqrstuvwxyz'"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="*">
    <xsl:variable name="invoice" select="normalize-space((.//Invoice | .//InvoiceNumber)[normalize-space(.) != ''][1])"/>
    <xsl:variable name="amount">
      <xsl:call-template name="plain-amount"><xsl:with-param name="text" select="(.//Amount)[1]"/></xsl:call-template>
    </xsl:variable>
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <SalesReceiptAddRq requestID="1">
          <SalesReceiptAdd>
            <xsl:call-template name="customer-ref"/>
            <xsl:call-template name="txn-date"><xsl:with-param name="text" select="normalize-space((.//DateTime)[1])"/></xsl:call-template>
            <xsl:if test="$invoice != ''">
              <RefNumber><xsl:value-of select="substring($invoice, 1, 11)"/></RefNumber>
            </xsl:if>
            <xsl:call-template name="address"><xsl:with-param name="element">BillAddress</xsl:with-param><xsl:with-param name="from" select="(Billing | .)[last()]"/></xsl:call-template>
            <xsl:call-template name="address"><xsl:with-param name="element">ShipAddress</xsl:with-param><xsl:with-param name="from" select="Shipping"/></xsl:call-template>
            <xsl:call-template name="memo"><xsl:with-param name="invoice" select="$invoice"/></xsl:call-template>
            <SalesReceiptLineAdd>
              <ItemRef><FullName>Uncategorized Item</FullName></ItemRef>
              <xsl:if test="normalize-space((.//Description)[1]) != ''">
                <Desc><xsl:value-of select="substring(normalize-space((.//Description)[1]), 1, 4095)"/></Desc>
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

  <!-- The customer: none on this sheet. -->
  <xsl:template name="customer-ref"/>

  <!-- The memo: how to find the transaction again, and what has no field of its own. -->
  <xsl:template name="memo">
    <xsl:param name="invoice"/>
    <xsl:variable name="type" select="normalize-space((.//TransactionType | .//Type)[1])"/>
    <xsl:variable name="text">
      <xsl:choose>
        <xsl:when test="normalize-space((.//TransactionID)[1]) != ''">
          <xsl:value-of select="concat('Authorize.Net transaction ', normalize-space((.//TransactionID)[1]))"/>
        </xsl:when>
        <xsl:otherwise>Authorize.Net receipt</xsl:otherwise>
      </xsl:choose>
      <xsl:call-template name="memo-part"><xsl:with-param name="label" select="', auth '"/><xsl:with-param name="value" select="(.//AuthorizationCode)[1]"/></xsl:call-template>
      <xsl:call-template name="memo-part"><xsl:with-param name="label" select="', '"/><xsl:with-param name="value" select="(.//PaymentMethod)[1]"/></xsl:call-template>
      <xsl:if test="string-length($invoice) &gt; 11">
        <xsl:value-of select="concat(', invoice ', $invoice)"/>
      </xsl:if>
      <xsl:call-template name="memo-part"><xsl:with-param name="label" select="', P.O. '"/><xsl:with-param name="value" select="(.//PONumber)[1]"/></xsl:call-template>
      <xsl:if test="$type != '' and not(contains(translate($type, $upper, $lower), 'capture'))">
        <xsl:value-of select="concat(', ', $type)"/>
      </xsl:if>
      <xsl:variable name="charges">
        <xsl:call-template name="charge"><xsl:with-param name="label">tax</xsl:with-param><xsl:with-param name="value" select="(.//Tax)[1]"/></xsl:call-template>
        <xsl:call-template name="charge"><xsl:with-param name="label">freight</xsl:with-param><xsl:with-param name="value" select="(.//Freight)[1]"/></xsl:call-template>
        <xsl:call-template name="charge"><xsl:with-param name="label">duty</xsl:with-param><xsl:with-param name="value" select="(.//Duty)[1]"/></xsl:call-template>
      </xsl:variable>
      <xsl:if test="$charges != ''">
        <xsl:value-of select="concat('; amount includes', substring($charges, 2))"/>
      </xsl:if>
    </xsl:variable>
    <Memo><xsl:value-of select="substring($text, 1, 4095)"/></Memo>
  </xsl:template>

  <!-- A label and a value for the memo; nothing for an empty value. -->
  <xsl:template name="memo-part">
    <xsl:param name="label"/>
    <xsl:param name="value"/>
    <xsl:if test="normalize-space($value) != ''">
      <xsl:value-of select="concat($label, normalize-space($value))"/>
    </xsl:if>
  </xsl:template>

  <!-- ", tax 24.18": an amount the receipt's total contains; nothing when it is zero. -->
  <xsl:template name="charge">
    <xsl:param name="label"/>
    <xsl:param name="value"/>
    <xsl:variable name="amount">
      <xsl:call-template name="plain-amount"><xsl:with-param name="text" select="$value"/></xsl:call-template>
    </xsl:variable>
    <xsl:if test="$amount != '' and number($amount) != 0">
      <xsl:value-of select="concat(', ', $label, ' ', $amount)"/>
    </xsl:if>
  </xsl:template>

  <!-- An amount as qbXML writes one ("1234.50"), from "$1,234.50", "185.40 (USD)" or
       "1,234.50 USD"; a comma after the last point ("1.234,50") or a lone comma before two
       last digits ("12,50") is the decimal point. Empty when no number is left. -->
  <xsl:template name="plain-amount">
    <xsl:param name="text"/>
    <xsl:variable name="kept" select="translate($text, translate($text, '0123456789.,-', ''), '')"/>
    <xsl:variable name="number">
      <xsl:choose>
        <xsl:when test="contains(substring-after($kept, '.'), ',')">
          <xsl:value-of select="translate(translate($kept, '.', ''), ',', '.')"/>
        </xsl:when>
        <xsl:when test="not(contains($kept, '.')) and contains($kept, ',')
                        and not(contains(substring-after($kept, ','), ','))
                        and string-length(substring-after($kept, ',')) = 2">
          <xsl:value-of select="translate($kept, ',', '.')"/>
        </xsl:when>
        <xsl:otherwise><xsl:value-of select="translate($kept, ',', '')"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:if test="$number != '' and string(number($number)) != 'NaN'">
      <xsl:value-of select="format-number(number($number), '0.00')"/>
    </xsl:if>
  </xsl:template>

  <!-- TxnDate from "12-Mar-2003", "1-Mar-2003 ", "12-Mar-03", "3/12/2003" or "2003-03-12";
       nothing when the text is no date of the calendar. -->
  <xsl:template name="txn-date">
    <xsl:param name="text"/>
    <xsl:variable name="separator">
      <xsl:choose>
        <xsl:when test="contains($text, '/')">/</xsl:when>
        <xsl:otherwise>-</xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="first" select="substring-before($text, $separator)"/>
    <xsl:variable name="second" select="substring-before(substring-after($text, $separator), $separator)"/>
    <xsl:variable name="third" select="substring-before(concat(substring-after(substring-after($text, $separator), $separator), ' '), ' ')"/>
    <xsl:variable name="months" select="'JANFEBMARAPRMAYJUNJULAUGSEPOCTNOVDEC'"/>
    <xsl:variable name="month-name" select="translate($second, $lower, $upper)"/>
    <xsl:variable name="year-text">
      <xsl:choose>
        <xsl:when test="$separator = '-' and string-length($first) = 4"><xsl:value-of select="$first"/></xsl:when>
        <xsl:otherwise><xsl:value-of select="$third"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="month">
      <xsl:choose>
        <xsl:when test="$separator = '/'"><xsl:value-of select="$first"/></xsl:when>
        <xsl:when test="string-length($first) = 4"><xsl:value-of select="$second"/></xsl:when>
        <xsl:when test="string-length($month-name) = 3 and contains($months, $month-name)
                        and string-length(substring-before($months, $month-name)) mod 3 = 0">
          <xsl:value-of select="string-length(substring-before($months, $month-name)) div 3 + 1"/>
        </xsl:when>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="day">
      <xsl:choose>
        <xsl:when test="$separator = '/'"><xsl:value-of select="$second"/></xsl:when>
        <xsl:when test="string-length($first) = 4"><xsl:value-of select="$third"/></xsl:when>
        <xsl:otherwise><xsl:value-of select="$first"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="year">
      <xsl:choose>
        <xsl:when test="string-length($year-text) = 2"><xsl:value-of select="concat('20', $year-text)"/></xsl:when>
        <xsl:otherwise><xsl:value-of select="$year-text"/></xsl:otherwise>
      </xsl:choose>
    </xsl:variable>
    <xsl:variable name="leap" select="($year mod 4 = 0 and $year mod 100 != 0) or $year mod 400 = 0"/>
    <xsl:variable name="days-in-month" select="substring('312831303130313130313031', 2 * $month - 1, 2) + ($month = 2 and $leap)"/>
    <xsl:if test="string-length($year) = 4 and translate(concat($year, $month, $day), '0123456789', '') = ''
                  and string-length($month) &gt;= 1 and string-length($month) &lt;= 2
                  and string-length($day) &gt;= 1 and string-length($day) &lt;= 2
                  and $year &gt;= 1900 and $month &gt;= 1 and $month &lt;= 12
                  and $day &gt;= 1 and $day &lt;= $days-in-month">
      <TxnDate><xsl:value-of select="concat($year, '-', format-number($month, '00'), '-', format-number($day, '00'))"/></TxnDate>
    </xsl:if>
  </xsl:template>

  <!-- A section's address: company, the person's name and the street on the address lines,
       each only when the receipt has it, then city, state, postal code and country. Nothing
       for a section without any of them. -->
  <xsl:template name="address">
    <xsl:param name="element"/>
    <xsl:param name="from"/>
    <xsl:variable name="company" select="normalize-space($from/Company)"/>
    <xsl:variable name="person" select="normalize-space(concat($from/FirstName, ' ', $from/LastName))"/>
    <xsl:variable name="street" select="normalize-space($from/Address)"/>
    <xsl:if test="$from and normalize-space(concat($company, $person, $street, $from/City, $from/StateProvince,
                                                   $from/ZipPostalCode, $from/Country)) != ''">
      <xsl:element name="{$element}">
        <xsl:call-template name="address-lines">
          <xsl:with-param name="first" select="$company"/>
          <xsl:with-param name="second" select="$person"/>
          <xsl:with-param name="third" select="$street"/>
        </xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">City</xsl:with-param><xsl:with-param name="value" select="$from/City"/><xsl:with-param name="length" select="31"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">State</xsl:with-param><xsl:with-param name="value" select="$from/StateProvince"/><xsl:with-param name="length" select="21"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">PostalCode</xsl:with-param><xsl:with-param name="value" select="$from/ZipPostalCode"/><xsl:with-param name="length" select="13"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">Country</xsl:with-param><xsl:with-param name="value" select="$from/Country"/><xsl:with-param name="length" select="31"/></xsl:call-template>
      </xsl:element>
    </xsl:if>
  </xsl:template>

  <!-- Addr1, Addr2, Addr3 from the non-empty ones of three texts, in their order. -->
  <xsl:template name="address-lines">
    <xsl:param name="first"/>
    <xsl:param name="second"/>
    <xsl:param name="third"/>
    <xsl:param name="line" select="1"/>
    <xsl:choose>
      <xsl:when test="$first != ''">
        <xsl:call-template name="field"><xsl:with-param name="element" select="concat('Addr', $line)"/><xsl:with-param name="value" select="$first"/><xsl:with-param name="length" select="41"/></xsl:call-template>
        <xsl:call-template name="address-lines">
          <xsl:with-param name="first" select="$second"/>
          <xsl:with-param name="second" select="$third"/>
          <xsl:with-param name="line" select="$line + 1"/>
        </xsl:call-template>
      </xsl:when>
      <xsl:when test="concat($second, $third) != ''">
        <xsl:call-template name="address-lines">
          <xsl:with-param name="first" select="$second"/>
          <xsl:with-param name="second" select="$third"/>
          <xsl:with-param name="line" select="$line"/>
        </xsl:call-template>
      </xsl:when>
    </xsl:choose>
  </xsl:template>

  <!-- An element with the value's first `length` letters; nothing for an empty value. -->
  <xsl:template name="field">
    <xsl:param name="element"/>
    <xsl:param name="value"/>
    <xsl:param name="length"/>
    <xsl:if test="normalize-space($value) != ''">
      <xsl:element name="{$element}"><xsl:value-of select="substring(normalize-space($value), 1, $length)"/></xsl:element>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
